#include "tools/zel/features/FeatureTable.h"

#include "common/stable/MathUtils.h"
#include "common/stable/NumberText.h"

#include <iterator>

namespace zel::tool {

using msreader::MsQuery;
using msreader::MsScanId;

namespace {

/// The value of a number, or of the next lower one that has a value, or else the first value: a
/// limit may lie one column outside the run.
QByteArray textOf(const QMap<int, double>& axis, double number)
{
    if (axis.isEmpty()) {
        return {};
    }
    const auto next = axis.upperBound(MathUtils::truncateToInt(number));
    return roundTripText(next == axis.cbegin() ? *next : *std::prev(next));
}

QByteArray timeText(const FeatureTableAxes& axes, double d1)
{
    return axes.minutesByD1.isEmpty() ? roundTripText(d1) : textOf(axes.minutesByD1, d1);
}

QByteArray row(qsizetype master, const ChargeFeature& feature, const FeatureTableAxes& axes)
{
    const QByteArrayList cells = {
        QByteArray::number(master),
        roundTripText(feature.mzApexOfCluster),
        roundTripText(feature.monoIsotopicMass),
        QByteArray::number(feature.charge),
        timeText(axes, feature.startD1),
        timeText(axes, feature.apexD1),
        timeText(axes, feature.endD1),
        textOf(axes.mobilityByD2, feature.startD2),
        textOf(axes.mobilityByD2, feature.apexD2),
        textOf(axes.mobilityByD2, feature.endD2),
        QByteArray::number(feature.apexIntensity),
        QByteArray::number(feature.isotopeCount),
        roundTripText(feature.averagineScore),
    };
    return cells.join('\t') + '\n';
}

} // namespace

Result<QMap<int, double>> mobilityByD2(msreader::MsDataSourceInterface* source)
{
    QMap<int, double> mobilities;
    ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids,
                         source->scanIds(MsQuery::createByMsLevel(1).setD2({})));
    for (const MsScanId& id : ids) {
        const int d2 = static_cast<int>(id.d2.value_or(-1));
        if (d2 >= 0 && !mobilities.contains(d2)) {
            ZEL_ASSIGN_OR_RETURN(const auto info, source->scanInfo(id));
            mobilities.insert(d2, info.mobility.value_or(0.0));
        }
    }
    return mobilities;
}

QByteArray featureTable(const QList<MasterFeature>& masters, const FeatureTableAxes& axes)
{
    QByteArray table = "master\tmz\tmono_mass\tcharge\trt_start\trt_apex\trt_end\tmobility_start\t"
                       "mobility_apex\tmobility_end\tintensity\tisotope_count\taveragine_score\n";
    for (qsizetype i = 0; i < masters.size(); ++i) {
        for (const ChargeFeature& feature : masters[i].chargeFeatures()) {
            table += row(i + 1, feature, axes);
        }
    }
    return table;
}

} // namespace zel::tool
