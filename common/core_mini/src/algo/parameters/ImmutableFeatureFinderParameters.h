#pragma once

namespace zel {

/// The fixed constants of feature finding; see g_immutableFeatureFinderParameters.
struct ImmutableFeatureFinderParameters
{
    /// Bins per Th of the cluster matrices and of the vectors given to the networks; a whole number
    /// in effect, as users convert it to `int`. A multiple of the 500 bins of the mobility finder,
    /// so that the m/z of its hills survive exactly.
    double clusterMzHashFactor = 1000.0;
    /// Largest m/z that any matrix holds.
    double maxMz = 3010.0;
    /// Largest charge that the scan-wise finder accepts.
    int maxClusterCharge = 10;
    /// Half width of the slice around a cluster peak, bins: 6.1 Th hold six isotope steps of charge
    /// 1 and twelve of charge 2 to each side, so that no isotopes are left over when a cluster is
    /// subtracted.
    int clusterSliceHalfWidth = 6100;
    /// Index of the peak in a slice.
    int clusterSliceCentre = 6100;
    /// Length of a slice after overlap removal, bins.
    int clusterSliceLength = 12201;
    /// Length of a vector that holds a whole scan, bins: up to the slice of a peak at `maxMz`.
    int scanVectorLength = 3016101;
    /// Neighbourhood radius of the clustering of scan-wise features: the distance of (scan, mass *
    /// dbscanMassFactor).
    double dbscanEpsilon = 3.0;
    /// Factor on a mass in Da that makes it comparable to scan numbers: with the radius above,
    /// points one scan apart join within 9.4 mDa, and none join four scans apart.
    int dbscanMassFactor = 300;
    /// Largest difference of the warped times of two features of one compound in two samples,
    /// minutes.
    double crossSampleRetentionTimeTolerance = 0.7;
    /// Number of bins that are summed for the noise test of a candidate peak, the middle one being
    /// the peak's.
    int clusterSumWidth = 3;
    /// Ions below this mass, Da, and below `lowIsotopeCountChargeLimit` show few isotopes, and may
    /// have one less than `minIsotopeCount`.
    double lowIsotopeCountMassLimit = 1200.0;
    int lowIsotopeCountChargeLimit = 3;
};

/// The one instance.
inline constexpr ImmutableFeatureFinderParameters g_immutableFeatureFinderParameters{};

} // namespace zel
