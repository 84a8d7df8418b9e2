#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/Point2dListUtils.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/Tracer.h"
#include "turbo/index/TurboXic_p.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zel {

namespace {

bool sameNumber(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool sameEntries(const StoredEntries& a, const StoredEntries& b)
{
    return std::ranges::equal(a.indices, b.indices) &&
           std::ranges::equal(a.values, b.values, sameNumber);
}

} // namespace

void TurboXic::Private::setContent(Eigen::SparseMatrix<double>&& matrix, Eigen::VectorXd&& times)
{
    MzDirectory directory(matrix); // before anything changes: it may not fit into memory
    intensityMatrix.swap(matrix);
    scanTimes.swap(times);
    std::swap(mzDirectory, directory);
    initialized = true;
}

TurboXic::TurboXic()
    : TurboXic(TurboXicSettings())
{}

TurboXic::TurboXic(const TurboXicSettings& settings)
    : m_private(std::make_unique<Private>())
{
    m_private->settings = settings;
}

TurboXic::~TurboXic() = default;

Error TurboXic::init(msreader::MsDataSourceInterface* source,
                     const QString& dataFingerprint,
                     QSharedPointer<ProgressBarInterface> progress)
{
    Error e;
    if (!m_private->initialized) {
        ZEL_RETURN_IF_ERROR(m_private->build(source, dataFingerprint, progress));
    }
    return e;
}

bool TurboXic::isInitialized() const
{
    return m_private->initialized;
}

bool TurboXic::isValid() const
{
    return m_private->isValid();
}

int TurboXic::scanCount() const
{
    return static_cast<int>(m_private->intensityMatrix.cols());
}

QString TurboXic::dataFingerprint() const
{
    return m_private->dataFingerprint;
}

Result<QList<QPointF>> TurboXic::retrieveXic(const XicDimensions& dimensions) const
{
    ZEL_TRACE_SCOPE(u"TURBO_XIC", "turbo_xic", "zel::TurboXic::retrieveXic");
    const auto& time = dimensions.timeInterval();
    if (dimensions.mzInterval().isEmpty() || time.isEmpty()) {
        return QList<QPointF>();
    }
    const bool preGuava = m_private->settings.preGuavaCompatible && !time.isUnbounded();
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> xic,
                         preGuava ? m_private->retrieveXicPreGuava(dimensions)
                                  : m_private->retrieveXic(dimensions));
    Point2dListUtils::roundYToFloat(xic);
    return xic;
}

Result<QList<QPointF>> TurboXic::retrieveScanData(int scanIndex) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(m_private->checkScanIndex(scanIndex));
    const StoredEntries entries = storedEntries(m_private->intensityMatrix, scanIndex);
    QList<QPointF> peaks;
    peaks.reserve(static_cast<qsizetype>(entries.size()));
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const double mz =
            FeatureFinderUtilities::unHashMz(entries.indices[i], m_private->settings.granularity);
        peaks.append(QPointF(mz, entries.values[i]));
    }
    return peaks;
}

Result<double> TurboXic::scanTime(int scanIndex) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(m_private->checkScanIndex(scanIndex));
    return m_private->scanTimes[scanIndex];
}

Result<int> TurboXic::findScanIndex(double time) const
{
    const Eigen::VectorXd& times = m_private->scanTimes;
    const auto found = std::partition_point(
        times.begin(), times.end(), [time](double scanTime) { return !(scanTime >= time); });
    if (found == times.end()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("Scan for time %1 does not exist.").arg(time));
    }
    return static_cast<int>(found - times.begin());
}

bool TurboXic::compare(const TurboXic& other) const
{
    const auto& a = m_private->intensityMatrix;
    const auto& b = other.m_private->intensityMatrix;
    if (a.rows() != b.rows() || a.cols() != b.cols() || a.nonZeros() != b.nonZeros()) {
        return false;
    }
    for (Eigen::Index column = 0; column < a.cols(); ++column) {
        if (!sameEntries(storedEntries(a, column), storedEntries(b, column))) {
            return false;
        }
    }
    return std::ranges::equal(m_private->scanTimes, other.m_private->scanTimes, sameNumber);
}

} // namespace zel
