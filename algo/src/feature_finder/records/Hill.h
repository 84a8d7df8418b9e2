#pragma once

namespace zel {

/// A ridge of signal in one mobility frame: an apex and the limits of its slopes along m/z and
/// mobility.
struct HillD2
{
    double mzLo = 0.0; ///< m/z, as all three
    double mzHi = 0.0;
    double mzApex = 0.0;
    int d1 = 0;   ///< number of the frame; -1 where the hill was not built from a single frame
    int d2Lo = 0; ///< in D2 units, as all three; filled after hill building
    int d2Hi = 0;
    int d2Apex = 0;
    int d2ApexIndex = 0; ///< column of the frame matrix, as all three
    int d2LoIndex = 0;
    int d2HiIndex = 0;
    double intensity = 0.0; ///< value of the smoothed frame at the apex
    double area = 0.0;      ///< sum of the smoothed profile through the apex, from `d2LoIndex` to
                            ///< `d2HiIndex`, both included

    bool isSet() const { return mzApex > 0.0; }
};

/// A ridge of signal along retention, in a run without mobility.
struct HillD1
{
    double mzLo = 0.0; ///< m/z, as all three
    double mzHi = 0.0;
    double mzApex = 0.0;
    int d1Lo = 0; ///< scan number, as all three; filled after hill building
    int d1Hi = 0;
    int d1Apex = 0;
    int d1ApexIndex = 0; ///< column of the run matrix, as all three
    int d1LoIndex = 0;
    int d1HiIndex = 0;
    double intensity = 0.0; ///< value of the smoothed run at the apex
    double area = 0.0;      ///< sum of the smoothed profile through the apex, from `d1LoIndex` to
                            ///< `d1HiIndex`, both included

    bool isSet() const { return mzApex > 0.0; }
};

} // namespace zel
