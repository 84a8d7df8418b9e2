#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <Eigen/SparseCore>
#include <QMap>

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader

/// Adjusts the settings of the mobility finder to a run: the width of the kernel along D2, and from
/// it the smallest extent of a feature along D1.
///
/// The frames with most points, ten of them, are smoothed along m/z and then along D2 with kernels
/// of growing width. Each count of local maxima falls from one width to the next; where the scatter
/// of these steps grows most sharply, a wider kernel has ceased to remove only noise. The mean over
/// the frames is the width that is chosen.
///
/// When to trust it: the frames are summed by a window that slides from one chosen frame to the
/// next as if they were neighbours. With `numberOfFramesToSum` 1 each matrix is the chosen frame,
/// and the estimate is what it says. With n, each but the first few is the sum of the frames that
/// lie n - 1 after the last n chosen ones: maxima of compounds that never met are counted together,
/// and a chosen frame among the last n - 1 of the run ends the estimate. Measured on 18 simulated
/// runs (60 frames of 200 mobility scans, peaks with a standard deviation of 4, 8 or 15 of them,
/// the preset trappedMobility()): summing 3 frames gave the same width as 1 in 14 runs, the next
/// wider one in 2 and the next narrower one in 2; on a real run of 42 frames both gave 15. The
/// width was 15 in most runs of the narrowest peaks and 9 in most others, always 9 for the widest:
/// it says where a Gaussian of this `kernelSigma` ceases to remove noise, not how wide the peaks
/// are. With `d2SmoothingPasses` above 1, positions in the list of counts and in the list of widths
/// are no longer the same when narrow widths are skipped. Nothing is estimated for finders other
/// than version 2.
class ZEL_EXPORT FeatureFinderParametersAutoSet
{
public:
    FeatureFinderParametersAutoSet();
    FeatureFinderParametersAutoSet(const FeatureFinderParametersAutoSet&);
    FeatureFinderParametersAutoSet& operator=(const FeatureFinderParametersAutoSet&);
    ~FeatureFinderParametersAutoSet();

    /// \param source  borrowed; all its MS1 scans are read
    /// \return the parameters with `d2KernelWidth` and `minHillLengthD1` set, or unchanged when
    ///         nothing could be estimated: a source without mobility, a frame that cannot be read,
    ///         frames whose counts give no scatter. kError for a null source only.
    Result<SettableFeatureFinderParameters> run(const SettableFeatureFinderParameters& params,
                                                msreader::MsDataSourceInterface* source);

private:
    /// What a frame holds.
    struct FrameStatistics
    {
        int d1 = -1;
        int pointCount = -1; ///< of all its scans together, each cut to `maxIonCount`
        double medianIntensity = -1.0;
        double maxIntensity = -1.0;
    };

    Error setParametersV2();
    Error setParametersV24D();
    Error populateScanStatisticsV24D();
    QList<FrameStatistics> richestFrames(int count) const;
    Error evaluateTopXFramesByPointCount(int count);

    /// The position of the kernel width after which the scatter of the counts grows most sharply;
    /// -1 when the counts do not say.
    int evaluateFrameRaw(const Eigen::SparseMatrix<double, 0, int>& frame);

    SettableFeatureFinderParameters m_params;
    msreader::MsDataSourceInterface* m_source = nullptr;
    QMap<int, FrameStatistics> m_scanStatistics; ///< by D1
};

} // namespace zel
