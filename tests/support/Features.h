#pragma once

#include "feature_finder/records/ChargeFeature.h"
#include "feature_finder/records/MasterFeature.h"

#include <random>

namespace zel::test {

/// A charge feature of this mass, place and strength; the other fields stand at their defaults.
inline ChargeFeature featureOf(double mass, double apexD1, int intensity, int charge = 2)
{
    ChargeFeature feature;
    feature.monoIsotopicMass = mass;
    feature.apexD1 = apexD1;
    feature.apexIntensity = intensity;
    feature.charge = charge;
    return feature;
}

inline MasterFeature masterOf(const QList<ChargeFeature>& members)
{
    MasterFeature master;
    master.setChargeFeatures(members);
    return master;
}

/// A charge feature with a value of its own in every field.
inline ChargeFeature randomFeature(std::mt19937& random)
{
    const auto real = [&random] { return std::uniform_real_distribution<>(-10.0, 3000.0)(random); };
    const auto whole = [&random] { return std::uniform_int_distribution<>(-9, 1 << 30)(random); };
    ChargeFeature feature;
    feature.mzApexOfCluster = real();
    feature.mzFirstOfCluster = real();
    feature.monoIsotopicMass = real();
    feature.apexIntensity = whole();
    feature.averagineScore = real();
    feature.startD1 = real();
    feature.endD1 = real();
    feature.apexD1 = real();
    feature.startD2 = real();
    feature.endD2 = real();
    feature.apexD2 = real();
    feature.isotopeCount = whole();
    feature.charge = whole();
    feature.apexIndex = whole();
    feature.monoOffset = whole();
    return feature;
}

} // namespace zel::test
