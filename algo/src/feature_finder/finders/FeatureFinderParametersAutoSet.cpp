#include "feature_finder/finders/FeatureFinderParametersAutoSet.h"

#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/PointList.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/finders/FeatureFinderParametersAutoSet_p.h"
#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"
#include "feature_finder/frames/FrameMatrix_p.h"
#include "feature_finder/frames/MatrixRows_p.h"
#include "feature_finder/records/ScanNumber_p.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace zel {

using msreader::MsDataSourceInterface;
using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;

using Matrix = Eigen::SparseMatrix<double, 0, int>;

namespace {

/// How many frames are evaluated.
constexpr int kFrameCount = 10;

/// The widths of the kernel along D2 that are tried, in columns for one pass.
constexpr std::array<double, 11> candidateD2KernelWidths = {
    5, 9, 15, 21, 27, 33, 39, 45, 51, 59, 67};

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

Result<QMap<int, QList<MsScanId>>> buildScansIdsByD1(MsDataSourceInterface* source)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_ASSIGN_OR_RETURN(
        const QList<MsScanId> ids,
        source->scanIds(MsQuery::createByMsLevel(1).setD2(math::Range<long long>())));
    QMap<int, QList<MsScanId>> idsByD1;
    for (const MsScanId& id : ids) {
        const std::optional<int> d1 = scanNumber(id.d1);
        if (d1 && scanNumber(id.d2)) {
            idsByD1[*d1].append(id);
        }
    }
    return idsByD1;
}

/// The frame with each column smoothed, that is along m/z.
Matrix smoothedAlongMz(const Matrix& frame, const SettableFeatureFinderParameters& params)
{
    const Eigen::VectorXd kernel =
        EigenUtilities::buildGaussianFilter1D(params.mzKernelWidth, params.kernelSigma, true)
            .reverse();
    return EigenUtilities::applyKernelColumnWiseToMatrix(frame, kernel, true);
}

/// The frame with each row smoothed, that is along D2.
Matrix smoothedAlongD2(const Matrix& frame,
                       int width,
                       const SettableFeatureFinderParameters& params)
{
    const Eigen::VectorXd kernel =
        EigenUtilities::buildGaussianFilter1D(width, params.kernelSigma, true).reverse();
    MatrixRows rows(frame);
    for (int pass = 0; pass < params.d2SmoothingPasses; ++pass) {
        rows.convolve(kernel);
    }
    Matrix smoothed;
    rows.toColumns(&smoothed);
    return smoothed;
}

/// Population standard deviation of three values.
double deviationOf3(const double* values)
{
    const double mean = (values[0] + values[1] + values[2]) / 3.0;
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        sum += (values[i] - mean) * (values[i] - mean);
    }
    return std::sqrt(sum / 3.0);
}

} // namespace

int kneeOfCounts(const std::vector<double>& counts)
{
    std::vector<double> steps;
    for (std::size_t i = 0; i + 1 < counts.size(); ++i) {
        steps.push_back(std::abs(counts[i + 1] - counts[i]));
    }
    std::vector<double> scatters;
    for (std::size_t i = 0; i + 2 < steps.size(); ++i) {
        scatters.push_back(deviationOf3(&steps[i]));
    }
    if (scatters.size() < 2) {
        return -1;
    }
    Eigen::RowVectorXd ratios(static_cast<Eigen::Index>(scatters.size()) - 1);
    double low = std::numeric_limits<double>::infinity();
    for (Eigen::Index i = 0; i < ratios.size(); ++i) {
        ratios(i) =
            scatters[static_cast<std::size_t>(i)] / scatters[static_cast<std::size_t>(i) + 1];
        low = std::isfinite(ratios(i)) ? std::min(low, ratios(i)) : low;
    }
    if (!std::isfinite(low)) {
        return -1;
    }
    return EigenUtilities::returnIndexNearestToCutoff(ratios, low, 1).constFirst() + 1;
}

FeatureFinderParametersAutoSet::FeatureFinderParametersAutoSet() = default;
FeatureFinderParametersAutoSet::FeatureFinderParametersAutoSet(
    const FeatureFinderParametersAutoSet&) = default;
FeatureFinderParametersAutoSet& FeatureFinderParametersAutoSet::operator=(
    const FeatureFinderParametersAutoSet&) = default;
FeatureFinderParametersAutoSet::~FeatureFinderParametersAutoSet() = default;

Result<SettableFeatureFinderParameters> FeatureFinderParametersAutoSet::run(
    const SettableFeatureFinderParameters& params, MsDataSourceInterface* source)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    m_source = source;
    m_params = params;
    if (m_params.featureFinderVersion == 1) {
        e = setParametersV2();
    } else if (m_params.featureFinderVersion == 2) {
        e = setParametersV24D();
    }
    if (e.hasError()) {
        // The two settings are written last, so the parameters are still those of the caller.
        qCDebug(algoLog) << "parameters left as they are" << e.errorMessage();
    }
    return m_params;
}

/// There is nothing to estimate for runs without mobility.
Error FeatureFinderParametersAutoSet::setParametersV2()
{
    return kNoError;
}

Error FeatureFinderParametersAutoSet::setParametersV24D()
{
    Error e;
    ZEL_RETURN_IF_ERROR(populateScanStatisticsV24D());
    ZEL_RETURN_IF_ERROR(evaluateTopXFramesByPointCount(kFrameCount));
    return kNoError;
}

Error FeatureFinderParametersAutoSet::populateScanStatisticsV24D()
{
    m_scanStatistics.clear();
    ZEL_ASSIGN_OR_RETURN(const auto idsByD1, buildScansIdsByD1(m_source));
    for (auto frame = idsByD1.cbegin(); frame != idsByD1.cend(); ++frame) {
        qCDebug(algoLog) << "Scan assessing" << frame.key();
        QList<QPointF> framePoints;
        for (const MsScanId& id : frame.value()) {
            auto points = m_source->scanData(MsQuery(id, PeakPickingFilter::Profile));
            if (points.isOk()) {
                removeLowIntensePoints(points.value(), m_params.maxIonCount, true);
                framePoints.append(points.value());
            }
        }
        framePoints.removeIf(
            [](const QPointF& point) { return std::abs(point.y()) <= kNegligible; });
        m_scanStatistics.insert(frame.key(),
                                {frame.key(),
                                 static_cast<int>(framePoints.size()),
                                 FeatureFinderUtilities::calculateMedianPoint2dList(framePoints),
                                 FeatureFinderUtilities::findPoint2dListMaximum(framePoints)});
    }
    return kNoError;
}

/// All frames when they are at most one more than `count`, in their order; else the `count` frames
/// with most points, those first.
QList<FeatureFinderParametersAutoSet::FrameStatistics>
FeatureFinderParametersAutoSet::richestFrames(int count) const
{
    QList<FrameStatistics> frames = m_scanStatistics.values();
    if (count + 1 < frames.size()) {
        std::stable_sort(
            frames.begin(), frames.end(), [](const FrameStatistics& a, const FrameStatistics& b) {
                return a.pointCount > b.pointCount;
            });
        frames.resize(count);
    }
    return frames;
}

Error FeatureFinderParametersAutoSet::evaluateTopXFramesByPointCount(int count)
{
    Error e;
    FeatureFinderV24DScansHandler handler;
    ZEL_RETURN_IF_ERROR(handler.init(m_source, m_params));
    QList<int> indices;
    for (const FrameStatistics& frame : richestFrames(count)) {
        ZEL_ASSIGN_OR_RETURN(const Matrix raw, handler.getFrameRaw(frame.d1));
        const int index = evaluateFrameRaw(smoothedAlongMz(raw, m_params));
        ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual(index, -1, Error(kError)));
        indices.append(index);
    }
    ZEL_RETURN_IF_ERROR(ErrorUtils::emptyCheckReturn(indices, Error(kError)));
    qCDebug(algoLog) << indices;

    const double sum = std::accumulate(indices.cbegin(), indices.cend(), 0.0);
    const int mean = rounded(sum / static_cast<double>(indices.size()));
    m_params.d2KernelWidth = rounded(candidateD2KernelWidths.at(static_cast<std::size_t>(mean)) /
                                     m_params.d2SmoothingPasses);
    m_params.minHillLengthD1 = rounded(m_params.d2KernelWidth * 0.5);
    return kNoError;
}

int FeatureFinderParametersAutoSet::evaluateFrameRaw(const Matrix& frame)
{
    constexpr int narrowest = 5;
    if (m_params.d2SmoothingPasses < 1) {
        return -1;
    }
    std::vector<double> counts;
    for (const double candidate : candidateD2KernelWidths) {
        int width = rounded(candidate / m_params.d2SmoothingPasses);
        width += width % 2 == 0 ? 1 : 0;
        if (width >= narrowest) {
            const Matrix smoothed = smoothedAlongD2(frame, width, m_params);
            counts.push_back(
                static_cast<double>(EigenUtilities::findSparseMatrixApexes(smoothed).size()));
        }
    }
    return kneeOfCounts(counts);
}

} // namespace zel
