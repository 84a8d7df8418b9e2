#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"

namespace zel {

SettableFeatureFinderParameters::SettableFeatureFinderParameters() = default;

SettableFeatureFinderParameters SettableFeatureFinderParameters::orbitrap()
{
    SettableFeatureFinderParameters params;
    params.featureFinderVersion = 1;
    params.maxD1Gap = 8;
    return params;
}

SettableFeatureFinderParameters SettableFeatureFinderParameters::qtof()
{
    SettableFeatureFinderParameters params = orbitrap();
    params.minAveragineScore = 0.75;
    params.relativeFrameNoiseFloor = 1.5;
    params.ppmTolerance = 15;
    params.maxIonCount = 20000;
    params.mzHashFactor = 500.0;
    params.mzKernelWidth = 11;
    params.kernelSigma = 3.0;
    return params;
}

SettableFeatureFinderParameters SettableFeatureFinderParameters::trappedMobility()
{
    SettableFeatureFinderParameters params;
    params.minAveragineScore = 0.7;
    params.minHillLengthD1 = 3;
    params.minHillLengthD2 = 12;
    params.ppmTolerance = 15;
    params.featureFinderVersion = 2;
    params.numberOfFramesToSum = 1;
    params.mzHashFactor = 500.0;
    params.mzKernelWidth = 35;
    params.kernelSigma = 5.0;
    return params;
}

} // namespace zel
