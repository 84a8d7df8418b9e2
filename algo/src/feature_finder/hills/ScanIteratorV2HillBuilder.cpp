#include "feature_finder/hills/ScanIteratorV2HillBuilder.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/stable/Logging.h"
#include "feature_finder/frames/MatrixRows_p.h"
#include "feature_finder/hills/HillLimits_p.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QThread>
#include <QtConcurrent>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace zel {

namespace {

using Apexes = QList<EigenUtilities::MatrixApexIndex>;
using Matrix = ScanIteratorV2HillBuilder::Matrix;

constexpr int kLeastMzKernelWidth = 3;
/// More than any peak needs; keeps a mistyped width from asking for all memory.
constexpr int kGreatestKernelWidth = 100000;
/// Fewer apexes than this are not worth a thread.
constexpr qsizetype kApexesPerBatch = 10000;

Eigen::VectorXd gaussian(int width, double sigma)
{
    return EigenUtilities::buildGaussianFilter1D(width, sigma, true).reverse();
}

int threadCount()
{
    bool isNumber = false;
    const int wanted =
        qEnvironmentVariableIntValue("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY", &isNumber);
    return isNumber ? wanted : QThread::idealThreadCount();
}

/// The positions of each batch, [first, second). The last takes what a whole division leaves.
std::vector<std::pair<qsizetype, qsizetype>> batchesOf(qsizetype apexCount)
{
    const qsizetype count =
        std::max<qsizetype>(std::min<qsizetype>(apexCount / kApexesPerBatch, threadCount()), 1);
    const qsizetype size = apexCount / count;
    std::vector<std::pair<qsizetype, qsizetype>> batches;
    for (qsizetype i = 0; i < count - 1; ++i) {
        batches.emplace_back(i * (size - 1), (i + 1) * (size - 1));
    }
    batches.emplace_back((count - 1) * (size - 1), apexCount);
    return batches;
}

HillD1 toHillD1(const HillD2& hill)
{
    HillD1 result;
    result.mzLo = hill.mzLo;
    result.mzHi = hill.mzHi;
    result.mzApex = hill.mzApex;
    result.d1ApexIndex = hill.d2ApexIndex;
    result.d1LoIndex = hill.d2LoIndex;
    result.d1HiIndex = hill.d2HiIndex;
    result.intensity = hill.intensity;
    result.area = hill.area;
    return result;
}

/// The hills that reach over at least `minLength` columns.
QList<HillD2> wideHills(const QList<HillD2>& hills, int minLength)
{
    QList<HillD2> wide;
    std::copy_if(
        hills.cbegin(), hills.cend(), std::back_inserter(wide), [minLength](const HillD2& hill) {
            return hill.d2HiIndex - hill.d2LoIndex >= minLength - 1;
        });
    return wide;
}

Error checkIsInit(bool isInit)
{
    return ErrorUtils::equal<bool>(
        isInit, true, Error(kError, "The hill builder is not initialized"));
}

} // namespace

Error ScanIteratorV2HillBuilder::init(const SettableFeatureFinderParameters& params)
{
    Error e;
    m_isInit = false;
    m_params = params;
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold<int>(
        params.mzKernelWidth,
        kLeastMzKernelWidth,
        ErrorUtilsParam::Inclusive,
        Error(kError,
              QStringLiteral("The m/z kernel needs at least %1 points, but has %2")
                  .arg(kLeastMzKernelWidth)
                  .arg(params.mzKernelWidth))));
    const int widest = std::max(params.mzKernelWidth, params.d2KernelWidth);
    ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold<int>(
        widest,
        kGreatestKernelWidth,
        ErrorUtilsParam::Inclusive,
        Error(kError,
              QStringLiteral("A kernel has at most %1 points, not %2")
                  .arg(kGreatestKernelWidth)
                  .arg(widest))));
    m_mzKernel = gaussian(params.mzKernelWidth, params.kernelSigma);
    m_d2Kernel = gaussian(params.d2KernelWidth, params.kernelSigma);
    m_isInit = true;
    return kNoError;
}

Result<QList<HillD2>> ScanIteratorV2HillBuilder::buildHills(const Matrix& frame, int d1) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkIsInit(m_isInit));
    if (frame.nonZeros() == 0) {
        return QList<HillD2>();
    }
    Matrix smoothed = frame;
    smoothDimensionMz(&smoothed);
    MatrixRows rows(smoothed);
    smoothDimensionD2(&rows, &smoothed);
    const Apexes apexes = EigenUtilities::findSparseMatrixApexes(smoothed);
    return wideHills(findHillLimitsFromApexes(apexes, smoothed, rows, d1),
                     m_params.minHillLengthD2);
}

Result<QList<HillD1>> ScanIteratorV2HillBuilder::buildHills(Matrix* matrix) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkIsInit(m_isInit));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(matrix != nullptr, true, Error(kError)));
    if (matrix->nonZeros() == 0) {
        return QList<HillD1>();
    }
    QElapsedTimer timer;
    timer.start();
    qCDebug(algoLog) << "Let the feature finding begin...";
    smoothDimensionMz(matrix);
    qCDebug(algoLog) << "Phase 1 Complete" << timer.restart();
    MatrixRows rows(*matrix);
    smoothDimensionD2(&rows, matrix);
    qCDebug(algoLog) << "Phase 2 Complete" << timer.restart();
    qCDebug(algoLog) << matrix->nonZeros() << "point count";
    const Apexes apexes = EigenUtilities::findSparseMatrixApexes(*matrix);
    qCDebug(algoLog) << "Peaks to be climbed" << apexes.size();
    timer.restart();
    const QList<HillD2> wide =
        wideHills(findHillLimitsFromApexes(apexes, *matrix, rows, -1), m_params.minHillLengthD1);
    qCDebug(algoLog) << "Hill count" << wide.size() << "Limits found in" << timer.elapsed() << "ms";
    QList<HillD1> hills;
    hills.reserve(wide.size());
    std::transform(wide.cbegin(), wide.cend(), std::back_inserter(hills), toHillD1);
    return hills;
}

/// Along m/z, which runs down the columns; as often as is set.
void ScanIteratorV2HillBuilder::smoothDimensionMz(Matrix* matrix) const
{
    for (int pass = 0; pass < m_params.mzSmoothingPasses; ++pass) {
        Matrix smoothed = EigenUtilities::applyKernelColumnWiseToMatrix(*matrix, m_mzKernel, true);
        matrix->swap(smoothed);
    }
}

/// Along the second axis, across the columns; as often as is set. Both forms of the matrix change.
void ScanIteratorV2HillBuilder::smoothDimensionD2(MatrixRows* rows, Matrix* matrix) const
{
    for (int pass = 0; pass < m_params.d2SmoothingPasses; ++pass) {
        rows->convolve(m_d2Kernel);
    }
    if (m_params.d2SmoothingPasses > 0) {
        rows->toColumns(matrix);
    }
}

QList<HillD2> ScanIteratorV2HillBuilder::findHillLimitsFromApexes(const Apexes& apexes,
                                                                  const Matrix& matrix,
                                                                  const MatrixRows& rows,
                                                                  int d1) const
{
    Apexes strongestFirst = apexes;
    std::stable_sort(strongestFirst.begin(),
                     strongestFirst.end(),
                     [](const auto& a, const auto& b) { return a.value > b.value; });
    const HillSearchSettings settings = {
        m_params.mzHashFactor, m_params.hillLimitRatioMz, m_params.hillLimitRatioD2, d1};
    const auto batches = batchesOf(apexes.size());
    qCDebug(algoLog) << "Batch execution in" << batches.size()
                     << "batches. Points count:" << apexes.size();
    std::vector<QFuture<std::vector<HillD2>>> futures;
    for (const auto& [from, to] : batches) {
        qCDebug(algoLog) << "Batch" << from << to;
        futures.push_back(QtConcurrent::run([&, from = from, to = to] {
            return climbDown(strongestFirst, from, to, matrix, rows, settings);
        }));
    }
    std::vector<HillD2> hills;
    for (QFuture<std::vector<HillD2>>& future : futures) {
        const std::vector<HillD2> some = future.takeResult();
        hills.insert(hills.end(), some.begin(), some.end());
    }
    removeHillsInsideEarlierOnes(&hills);
    return {hills.begin(), hills.end()};
}

} // namespace zel
