#include "feature_finder/records/MasterFeature.h"

#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/MathUtils.h"
#include "common/stable/Stringify.h"

#include <QPointF>
#include <QTextStream>

#include <algorithm>

namespace zel {

namespace {

/// The smallest value of one field and the greatest of another.
Interval<double> rangeOf(const QList<ChargeFeature>& features,
                         double ChargeFeature::*start,
                         double ChargeFeature::*end)
{
    if (features.isEmpty()) {
        return {};
    }
    Interval<double> range = {features.constFirst().*start, features.constFirst().*end};
    for (const ChargeFeature& feature : features) {
        range.start = std::min(range.start, feature.*start);
        range.end = std::max(range.end, feature.*end);
    }
    return range;
}

QString chargesText(const QList<int>& charges)
{
    QStringList texts;
    for (const int charge : charges) {
        texts.append(stringify(charge, StringifierState()));
    }
    return QLatin1Char('(') + texts.join(QStringLiteral(", ")) + QLatin1Char(')');
}

} // namespace

Error MasterFeature::pushBackChargeFeature(const ChargeFeature& feature)
{
    m_features.append(feature);
    return kNoError;
}

ChargeFeature MasterFeature::maxChargeFeatureByIntensity() const
{
    return strongest();
}

void MasterFeature::setApexIntensity(double intensity)
{
    const qsizetype index = strongestIndex();
    if (index >= 0) {
        m_features[index].apexIntensity = MathUtils::truncateToInt(intensity);
    }
}

double MasterFeature::weightedD1() const
{
    QList<QPointF> points;
    points.reserve(m_features.size());
    for (const ChargeFeature& feature : m_features) {
        points.append(QPointF(feature.apexD1, feature.apexIntensity));
    }
    return FeatureFinderUtilities::calculatedWeightedRetentionTime(points);
}

Interval<double> MasterFeature::d1Range() const
{
    return rangeOf(m_features, &ChargeFeature::startD1, &ChargeFeature::endD1);
}

Interval<double> MasterFeature::d2Range() const
{
    return rangeOf(m_features, &ChargeFeature::startD2, &ChargeFeature::endD2);
}

QSet<int> MasterFeature::charges() const
{
    QSet<int> charges;
    for (const ChargeFeature& feature : m_features) {
        charges.insert(feature.charge);
    }
    return charges;
}

QList<int> MasterFeature::sortedCharges() const
{
    const QSet<int> unsorted = charges();
    QList<int> sorted(unsorted.begin(), unsorted.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

qsizetype MasterFeature::strongestIndex() const
{
    if (m_features.isEmpty()) {
        return -1;
    }
    return std::max_element(m_features.begin(),
                            m_features.end(),
                            [](const ChargeFeature& a, const ChargeFeature& b) {
                                return a.apexIntensity < b.apexIntensity;
                            }) -
           m_features.begin();
}

const ChargeFeature& MasterFeature::strongest() const
{
    static const ChargeFeature none;
    const qsizetype index = strongestIndex();
    return index < 0 ? none : m_features.at(index);
}

QString stringify(const MasterFeature& master, const StringifierState& state)
{
    const StringifierState memberState = state.extendPrefix(QStringLiteral("    "));
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberPrecision(state.realNumberPrecision(stream.realNumberPrecision()));
    const auto field = [&stream, &state](const char* name) -> QTextStream& {
        return stream << '\n' << state.newLinePrefix() << name << ':';
    };
    field("monoIsotopicMass") << master.monoIsotopicMass();
    field("weightedD1") << master.weightedD1();
    field("apexD1") << master.apexD1();
    field("apexD2") << master.apexD2();
    field("apexAveragine") << master.apexAveragine();
    field("apexIntensity") << master.apexIntensity();
    field("apexIsotopeCount") << master.apexIsotopeCount();
    field("chargeFeaturesCount") << master.chargeFeaturesCount();
    field("d1Range") << master.d1Range().start << " - " << master.d1Range().end;
    field("d2Range") << master.d2Range().start << " - " << master.d2Range().end;
    field("charges") << chargesText(master.sortedCharges());
    QStringList members;
    for (const ChargeFeature& feature : master.chargeFeatures()) {
        members.append(stringify(feature, memberState));
    }
    field("chargeFeatures") << members.join(QLatin1Char('\n'));
    field("maxChargeFeatureByIntensity")
        << stringify(master.maxChargeFeatureByIntensity(), memberState);
    return text;
}

} // namespace zel
