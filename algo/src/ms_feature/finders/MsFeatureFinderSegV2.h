#pragma once

#include "ms_feature/finders/MsFeatureFinderSeg.h"

namespace zel {

/// The second edition of the adaptive finder. The factory does not make it: whoever wants it builds
/// it. It differs from MsFeatureFinderSeg in these points:
///
/// - The grid takes up to 1000 samples a minute, and the width of the smoothing filter is an
///   argument of its own.
/// - The smoothed curve cannot go negative, steps of less than 1e-9 are flat, and candidates
///   without height or area are skipped.
/// - Cuts are moved onto the regular grid, not onto the XIC.
/// - Neighbours without a real valley between them are merged, before the matches are given out
///   (`mergeBeforeScoring`; the distance filter does not run then) or at the end.
///
/// Also keeps the last kernel: one object serves one thread at a time.
class ZEL_EXPORT MsFeatureFinderSegV2 : public MsFeatureFinderSegBase
{
public:
    /// \param kernelFilterWidth   full width of the smoothing filter, minutes; 0.2 without a value.
    ///                            0 stands for the setting `adaptiveSmoothingStDev`
    MsFeatureFinderSegV2(const MsFeatureFinderSettings& settings,
                         const std::optional<double>& kernelFilterWidth,
                         bool mergeBeforeScoring);
    ~MsFeatureFinderSegV2() override;

    double kernelFilterWidth() const { return m_kernelFilterWidth; }

protected:
    /// \return as findBy
    Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                  const PlotBase& xic) const override;

    /// \param smoothed  the smoothed curve on the regular grid
    /// \param extremes  minimum, maximum, ..., minimum, on the curve before smoothing
    Error findFeaturesBeforeFilters(const PlotBase& xic,
                                    QList<QPointF>* smoothed,
                                    QList<QPointF>* extremes,
                                    std::vector<Feature>* features) const;

private:
    segmentation::Policy policy() const;
    Error getConvolutionKernel(double sigma, std::vector<double>* kernel) const;

    double m_kernelFilterWidth;
    mutable double m_cachedSigma = -1.0;
    mutable std::vector<double> m_cachedKernel;
    bool m_mergeBeforeScoring;
};

} // namespace zel
