#pragma once

#include "common/core_mini/src/algo/parameters/XicDetectionOptions.h"
#include "common/stable/Export.h"

#include <QString>

namespace zel {

/// The settings of untargeted feature finding. A plain value; each finder keeps its own copy.
///
/// D1 is the scan or frame number along retention, D2 the mobility scan inside a frame; gaps and
/// lengths are in the source's own numbers of them. A default record suits the scan-wise finder;
/// the presets are those for the other two, tuned on simulated and published runs. A hill is longer
/// than its signal, by a kernel less one column and by the column that ends it on each side: a peak
/// in one scan, with 9 columns of kernel, gives a hill of 11 columns.
struct ZEL_EXPORT SettableFeatureFinderParameters
{
    SettableFeatureFinderParameters();

    /// LC-MS of an Orbitrap, centroids or profiles at a resolution of about 120,000: version 1, and
    /// isotopes belong together when their apexes are up to 8 scans apart: where scans are fast,
    /// the apex of a wide flat peak is that uncertain.
    static SettableFeatureFinderParameters orbitrap();

    /// LC-MS of a time-of-flight analyser, resolution about 40,000: as `orbitrap`, but a lower
    /// averagine score (0.75), a noise floor (1.5), 15 ppm, 20,000 points a scan, 500 bins per Th,
    /// wider m/z kernel (11 points, sigma 3).
    static SettableFeatureFinderParameters qtof();

    /// Trapped ion mobility with a time-of-flight analyser: version 2; lower averagine score (0.7),
    /// 15 ppm, 500 bins per Th, kernels of 35 bins of m/z and 9 of mobility, sigma 5, hills of 12
    /// columns, features of 3 frames; a peak in one mobility scan makes no hill of these. Frames
    /// are not summed: a frame keeps at most 15,000 points, which the sum of several would fill
    /// with the strong ions.
    static SettableFeatureFinderParameters trappedMobility();

    /// Writes all values to the log.
    void printFfUserParams() const;

    // What is accepted as a feature.

    /// Clusters that resemble the averagine pattern less, on a scale from 0 to 1, are dropped.
    double minAveragineScore = 0.8;
    /// Range of accepted monoisotopic masses, Da, both ends included.
    double minMonoMass = 500.0;
    double maxMonoMass = 10000.0;
    /// Master features with a narrower D1 range, minutes, are left out of cross-sample collation.
    double minFeatureWidth = 0.05;
    /// Smallest extent along D1, of hills, of clusters followed from frame to frame and of charge
    /// features; also the fewest points of a cluster of scan-wise features. A larger value loses
    /// short peaks, a smaller one admits noise.
    int minHillLengthD1 = 5;
    /// Smallest width of a hill along D2, columns.
    int minHillLengthD2 = 7;
    /// Clusters of fewer isotopes are dropped; see
    /// ImmutableFeatureFinderParameters::lowIsotopeCountMassLimit for who may have one less. 2
    /// finds more weak ions at the price of wrong charges.
    int minIsotopeCount = 3;
    /// Points of a summed frame, or of a run matrix, that do not exceed this multiple of its median
    /// are dropped; 0: none. Data of an Orbitrap are thresholded already.
    double relativeFrameNoiseFloor = 0.0;
    /// Mass tolerance, parts per million.
    int ppmTolerance = 10;
    /// Drop the cross-sample groups that consist of charge 1 alone.
    bool removeChargeOneOnlyFeatures = true;
    /// Charges are protons taken up; false: protons given off (negative mode). See
    /// molcalc::calculateUnchargedMassFromMzCharge.
    bool unchargedMassFlag = true;

    // How much is read and kept in memory.

    /// The scan-wise finder keeps this many points of a scan.
    int maxPointsPerScan = 2000;
    /// Points kept of one scan by the hill finder of runs without mobility and by the parameter
    /// estimation.
    int maxIonCount = 10000;

    /// The file of the charge and the monoisotope classifier; the default is compiled in.
    QString networkFilePath = QStringLiteral(":/zel_algo/networks/charge_mono.znet");
    /// Turn D1 of the results from scan numbers into minutes.
    bool convertD1ToRetentionTime = true;
    /// Which finder FeatureFinderFactory makes. 0: scan by scan; 1: hills of a whole run without
    /// mobility; 2: frame by frame, with mobility.
    int featureFinderVersion = 0;

    // Matrices of frames and runs.

    /// Frames that are summed into one matrix; 0: all of them.
    int numberOfFramesToSum = 3;
    /// Bins per Th: 6 to 7 bins across a peak at m/z 500. The mobility finder always takes 500.
    double mzHashFactor = 1000.0;
    /// D2 units (runs without mobility: scans) per column.
    double d2HashFactor = 1.0;
    /// Largest distance along D1 at which two things belong together, and half width of a cluster
    /// slice of a run without mobility.
    int maxD1Gap = 5;
    /// The same along D2.
    int maxD2Gap = 10;

    // Hills.

    /// Height relative to the apex at which a hill ends along D2, and along m/z.
    double hillLimitRatioD2 = 0.05;
    double hillLimitRatioMz = 0.10;
    /// Points of the Gaussian along m/z, in bins, at least 3 and odd, and how often it is applied.
    int mzKernelWidth = 9;
    int mzSmoothingPasses = 1;
    /// Points of the Gaussian along D2, in columns, and how often it is applied. The parameter
    /// estimation of the mobility finder is made for one pass.
    int d2KernelWidth = 9;
    int d2SmoothingPasses = 1;
    /// Standard deviation of both Gaussians, in bins and columns; best about that of the peaks.
    double kernelSigma = 2.5;

    /// How chromatograms are cut into peaks; see XicIntegrator.
    XicPeakSplitterOptions peakSplitterOptions;
    XicBaselineLimitsDetectorOptions baselineOptions;

    /// A master feature of the scan-wise finder stays when its strongest charge feature is at least
    /// this many times as intense as its weakest. 2 and more lose features of 5 scans, 1 keeps
    /// chemical background.
    double minIntensityDynamicRange = 1.5;
};

} // namespace zel
