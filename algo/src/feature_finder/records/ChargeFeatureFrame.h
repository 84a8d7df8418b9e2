#pragma once

#include <climits>

namespace zel {

/// One isotope cluster of known charge inside one mobility frame. A plain value; -1 stands for what
/// a finder does not determine.
struct ChargeFeatureFrame
{
    double mzApexOfCluster = -1.0;  ///< m/z of the isotope peak on which the cluster was found
    double mzFirstOfCluster = -1.0; ///< m/z of the monoisotopic hill
    double monoIsotopicMass = -1.0; ///< neutral monoisotopic mass, Da
    double intensity = -1.0;        ///< apex intensity of the cluster in this frame
    double averagine = -1.0;        ///< correlation of the cluster with the averagine pattern
    int d1 = -1;                    ///< number of the frame
    int startD2 = -1;
    int endD2 = -1;
    int apexD2 = -1;
    int isotopeCount = -1; ///< isotope peaks matched
    int charge = -1;
    int apexIndex = -1;       ///< stays -1
    int monoOffset = INT_MIN; ///< isotope steps from the monoisotopic peak up to `mzApexOfCluster`
};

} // namespace zel
