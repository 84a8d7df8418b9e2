#pragma once

#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/ms_types/Interval.h"
#include "common/stable/Export.h"
#include "feature_finder/FeatureFinderBase.h"
#include "feature_finder/records/ChargeFeatureBuilder4D.h"

namespace zel {

class FeatureFinderV24DScansHandler;

/// The finder for runs with ion mobility, in four dimensions: retention (D1), mobility (D2), m/z
/// and intensity.
///
/// 1. For each frame, the sum of a window of frames (FeatureFinderV24DScansHandler) gives hills
///    (ScanIteratorV2HillBuilder), and these give isotope clusters of known charge
///    (ScanIteratorV2HillClusteromatic).
/// 2. Clusters of one charge, mass and mobility are linked along retention.
/// 3. Each link is a charge feature, or several when its intensity falls apart at valleys.
/// 4. Charge features of one mass and time make a master feature.
///
/// It always works with 500 bins per Th. In memory are the frames of one window and the records of
/// clusters. All runs on the caller's thread but the search for the limits of hills.
class ZEL_EXPORT FeatureFinderV24D : public FeatureFinderBase
{
public:
    FeatureFinderV24D();
    FeatureFinderV24D(const FeatureFinderV24D&);
    FeatureFinderV24D& operator=(const FeatureFinderV24D&);
    ~FeatureFinderV24D() override;

    /// \return kError for a null source, or one without mobility; kOperationCanceledError; the
    ///         failures of the source, of the hill builder and of the networks. A frame whose
    ///         clustering fails counts as one without clusters.
    Result<QList<MasterFeature>> findFeatures(
        msreader::MsDataSourceInterface* source,
        QSharedPointer<ProgressBarInterface> progress) override;

    /// Takes the parameters, but for the grid and the kernel along m/z; see setMobilityGranularity.
    Error init(const SettableFeatureFinderParameters& params) override;

    // What is read of a source. To be called before `findFeatures`.

    /// Only these frame numbers, both ends included; a negative end: all.
    void setStartStopD1(int start, int stop) { m_startStopD1 = {start, stop}; }
    /// Only these mobility scans, both ends included; both negative, or not ascending: all.
    void setStartStopD2(int start, int stop) { m_startStopD2 = {start, stop}; }
    /// Only this range of m/z, both ends included.
    void setStartStopMz(double start, double stop) { m_startStopMz = {start, stop}; }

    // The steps.

    /// Makes a handler ready for a source. Mind what happens when all frames are to be summed
    /// (`numberOfFramesToSum` 0): the finder's parameters are then replaced for good by default
    /// ones, with the number of frames in that field and `minHillLengthD1` -1. The hill builder and
    /// the clusters of this source still go by what was set; tolerances, gaps, splitting and the
    /// conversion to minutes do not, nor does anything in later sources.
    /// \return kError for a null source or one without mobility, or the handler's failure
    Error initPerMsFile(msreader::MsDataSourceInterface* source,
                        FeatureFinderV24DScansHandler* handler);

    /// The clusters of all frames, by frame.
    Result<QList<ChargeFeatureFrame>> buildPerFrameChargeFeatures(
        msreader::MsDataSourceInterface* source, QSharedPointer<ProgressBarInterface> progress);

    /// Links clusters along D1, taken by ascending D1. Each joins the first link of its charge
    /// whose strongest cluster is nearer than `ppmTolerance` in mass; in whose D2 limits it lies,
    /// or whose apex is nearer than `maxD2Gap`; and that ends at most `maxD1Gap` before. Else it
    /// opens a new one.
    ///
    /// Links are kept by whole Daltons. A cluster is compared with those of its own Dalton and of
    /// the two beside it, in ascending order; but where its own has not been used before, it opens
    /// a new link without looking at the two beside it, even when one is within the tolerance.
    /// \return by ascending Dalton, then in the order of opening
    /// \note O(n log n), plus for each cluster the links of three Daltons that have not ended.
    QList<ChargeFeatureBuilder4D> groupChargeFeatureFramesAcrossD1(
        const QList<ChargeFeatureFrame>& frames);

    /// Makes charge features of the links of at least `minHillLengthD1` clusters, and cuts each at
    /// the valleys of its intensity along D1. All pieces keep the apex of the whole.
    /// \return the splitter's failure
    Result<QList<ChargeFeature>> splitChargeFeatures(const QList<ChargeFeatureBuilder4D>& builders);

private:
    bool isSkipped(int d1) const;

    Interval<int> m_startStopD1{-1, -1};
    Interval<int> m_startStopD2{-1, -1};
    Interval<double> m_startStopMz{0.0, g_immutableFeatureFinderParameters.maxMz};
};

} // namespace zel
