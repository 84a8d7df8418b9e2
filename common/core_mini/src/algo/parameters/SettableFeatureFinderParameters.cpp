#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"

#include "common/stable/Logging.h"

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

void SettableFeatureFinderParameters::printFfUserParams() const
{
    const auto print = [](const char* name, const auto& value) {
        qCDebug(algoLog).nospace() << name << ": " << value;
    };
    print("minAveragineScore", minAveragineScore);
    print("minMonoMass", minMonoMass);
    print("maxMonoMass", maxMonoMass);
    print("minFeatureWidth", minFeatureWidth);
    print("minHillLengthD1", minHillLengthD1);
    print("minHillLengthD2", minHillLengthD2);
    print("minIsotopeCount", minIsotopeCount);
    print("relativeFrameNoiseFloor", relativeFrameNoiseFloor);
    print("ppmTolerance", ppmTolerance);
    print("removeChargeOneOnlyFeatures", removeChargeOneOnlyFeatures);
    print("unchargedMassFlag", unchargedMassFlag);
    print("maxPointsPerScan", maxPointsPerScan);
    print("maxIonCount", maxIonCount);
    print("networkFilePath", networkFilePath);
    print("convertD1ToRetentionTime", convertD1ToRetentionTime);
    print("featureFinderVersion", featureFinderVersion);
    print("numberOfFramesToSum", numberOfFramesToSum);
    print("mzHashFactor", mzHashFactor);
    print("d2HashFactor", d2HashFactor);
    print("maxD1Gap", maxD1Gap);
    print("maxD2Gap", maxD2Gap);
    print("hillLimitRatioD2", hillLimitRatioD2);
    print("hillLimitRatioMz", hillLimitRatioMz);
    print("mzKernelWidth", mzKernelWidth);
    print("mzSmoothingPasses", mzSmoothingPasses);
    print("d2KernelWidth", d2KernelWidth);
    print("d2SmoothingPasses", d2SmoothingPasses);
    print("kernelSigma", kernelSigma);
    print("peakSplitterOptions.splittingDisabled", peakSplitterOptions.splittingDisabled);
    print("peakSplitterOptions.mergeIntensityRatio", peakSplitterOptions.mergeIntensityRatio);
    print("peakSplitterOptions.minSkew", peakSplitterOptions.minSkew);
    print("peakSplitterOptions.valleyRatio", peakSplitterOptions.valleyRatio);
    print("peakSplitterOptions.noiseFactor", peakSplitterOptions.noiseFactor);
    print("peakSplitterOptions.minRelativeHeight", peakSplitterOptions.minRelativeHeight);
    print("peakSplitterOptions.minPointsPerPeak", peakSplitterOptions.minPointsPerPeak);
    print("baselineOptions.minPeakWidth", baselineOptions.minPeakWidth);
    print("baselineOptions.ignoreRetentionTime", baselineOptions.ignoreRetentionTime);
    print("baselineOptions.detectionMode", baselineOptions.detectionMode);
    print("baselineOptions.timeHalfWindow", baselineOptions.timeHalfWindow);
    print("baselineOptions.baselineHalfWindow", baselineOptions.baselineHalfWindow);
    print("baselineOptions.highNoiseFactor", baselineOptions.highNoiseFactor);
    print("baselineOptions.lowNoiseFactor", baselineOptions.lowNoiseFactor);
    print("baselineOptions.relativeHeight", baselineOptions.relativeHeight);
    print("baselineOptions.maxGapPoints", baselineOptions.maxGapPoints);
    print("minIntensityDynamicRange", minIntensityDynamicRange);
}

} // namespace zel
