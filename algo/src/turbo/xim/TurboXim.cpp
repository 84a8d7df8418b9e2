#include "turbo/xim/TurboXim.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/PointList.h"
#include "turbo/index/SpectrumMatrixBuilder_p.h"

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

namespace zel {

class TurboXim::Private
{
public:
    Error init(const QMap<int, QList<QPointF>>& mobilityScans);
    bool isValid() const { return intensityMatrix.rows() >= 2 && intensityMatrix.cols() >= 2; }
    Result<QList<QPointF>> retrieveXim(const Interval<double>& mz, Interval<int> scans) const;

    Eigen::SparseMatrix<double> intensityMatrix; ///< rows m/z bins, columns mobility scans
    TurboXicSettings settings;

private:
    Error checkBlock(int firstRow, int lastRow, Interval<int> scans) const;
};

namespace {

Error checkScanNumbers(const QMap<int, QList<QPointF>>& mobilityScans)
{
    for (const int number : {mobilityScans.firstKey(), mobilityScans.lastKey()}) {
        if (number < 0 || number == std::numeric_limits<int>::max()) {
            ZEL_RETURN_ERROR(
                kBadParameterError,
                QStringLiteral("A mobility scan cannot have the number %1").arg(number));
        }
    }
    return kNoError;
}

/// The number of bins up to 1 m/z above the greatest last m/z of the spectra.
int rowCount(const QMap<int, QList<QPointF>>& mobilityScans, int granularity)
{
    double maxMz = 0.0;
    for (const QList<QPointF>& spectrum : mobilityScans) {
        maxMz = spectrum.isEmpty() ? maxMz : std::max(maxMz, spectrum.last().x());
    }
    return std::max(FeatureFinderUtilities::hashMz(maxMz + 1.0, granularity), 0);
}

} // namespace

Error TurboXim::Private::init(const QMap<int, QList<QPointF>>& mobilityScans)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::emptyCheckReturn(mobilityScans, Error(kError)));
    ZEL_RETURN_IF_ERROR(checkScanNumbers(mobilityScans));
    try {
        SpectrumMatrixBuilder builder(rowCount(mobilityScans, settings.granularity),
                                      mobilityScans.lastKey() + 1,
                                      settings.granularity,
                                      settings.maxIonCount);
        for (auto scan = mobilityScans.cbegin(); scan != mobilityScans.cend(); ++scan) {
            QList<QPointF> spectrum = scan.value();
            removeLowIntensePoints(spectrum, settings.maxIonCount, true);
            builder.skipToColumn(scan.key());
            ZEL_RETURN_IF_ERROR(
                ErrorUtils::equal<bool>(builder.appendColumn(spectrum),
                                        true,
                                        Error(kError, "Too many peaks for an index")));
        }
        ZEL_RETURN_IF_ERROR(
            ErrorUtils::equal<bool>(builder.entryCount() != 0, true, Error(kError)));
        builder.finish(&intensityMatrix);
    } catch (const std::bad_alloc&) {
        ZEL_RETURN_ERROR(kError, "Not enough memory for the index of a frame");
    }
    return kNoError;
}

Error TurboXim::Private::checkBlock(int firstRow, int lastRow, Interval<int> scans) const
{
    const auto rows = static_cast<int>(intensityMatrix.rows());
    const auto columns = static_cast<int>(intensityMatrix.cols());
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold(
        firstRow, 0, ErrorUtilsParam::Inclusive, Error(kBadParameterError)));
    ZEL_RETURN_IF_ERROR(
        ErrorUtils::belowThreshold(lastRow, rows, ErrorUtilsParam::Exclusive, Error(kError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold(
        scans.start, 0, ErrorUtilsParam::Inclusive, Error(kBadParameterError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold(
        scans.end,
        columns,
        ErrorUtilsParam::Exclusive,
        Error(kBadParameterError, QStringLiteral("%1-%2").arg(scans.end).arg(columns))));
    return kNoError;
}

Result<QList<QPointF>> TurboXim::Private::retrieveXim(const Interval<double>& mz,
                                                      Interval<int> scans) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(isValid(), true, Error(kError)));
    if (mz == Interval<double>() || scans == Interval<int>()) {
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    const int firstRow = FeatureFinderUtilities::hashMz(mz.start, settings.granularity);
    const int lastRow = FeatureFinderUtilities::hashMz(mz.end, settings.granularity);
    QList<QPointF> xim;
    if (checkBlock(firstRow, lastRow, scans).hasError()) {
        return xim;
    }
    xim.reserve(std::max(scans.end - scans.start, 0));
    for (int scan = scans.start; scan < scans.end; ++scan) {
        const auto inside = storedEntries(intensityMatrix, scan).between(firstRow, lastRow);
        xim.append(QPointF(scan, std::accumulate(inside.values.begin(), inside.values.end(), 0.0)));
    }
    return xim;
}

TurboXim::TurboXim(const TurboXicSettings& settings)
    : m_private(std::make_unique<Private>())
{
    m_private->settings = settings;
}

TurboXim::~TurboXim() = default;

Error TurboXim::init(const QMap<int, QList<QPointF>>& mobilityScans)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::emptyCheckReturn(mobilityScans, Error(kError)));
    ZEL_RETURN_IF_ERROR(m_private->init(mobilityScans));
    return kNoError;
}

bool TurboXim::isValid() const
{
    return m_private->isValid();
}

int TurboXim::matrixColumnCount() const
{
    return static_cast<int>(m_private->intensityMatrix.cols());
}

Result<QList<QPointF>> TurboXim::retrieveXim(const Interval<double>& mz, Interval<int> scans) const
{
    Error e;
    auto xim = m_private->retrieveXim(mz, scans);
    ZEL_RETURN_IF_ERROR(xim.error());
    return xim;
}

} // namespace zel
