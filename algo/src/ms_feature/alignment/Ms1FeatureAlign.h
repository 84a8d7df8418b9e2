#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"
#include "ms_feature/alignment/Ms1FeatureAlignSettings.h"
#include "ms_feature/records/Ms1Feature.h"

#include <QList>

#include <memory>
#include <optional>

namespace zel {

class MsFeatureFinderBase;
class MsFeatureFinderFactory;

/// Aligns the features that one peptide ion has in several samples, and gives all of them the same
/// time intervals:
///
/// 1. All XICs are laid on one regular grid, on the time axis that the samples share so far.
/// 2. Each is shifted to where it overlays best that of the sample whose apex is the median one
///    (MSLocalAlign).
/// 3. The shifted XICs must correlate with the most intense one.
/// 4. On their sum the feature is found again.
/// 5. Its intervals are handed back to each sample, moved to the sample's own time.
///
/// On the sum a finder of fixed width, or by prototype, centres on the matches of all samples,
/// moved to the shared axis; the adaptive one gives them to its candidates.
///
/// Times are minutes. With `htmlDumpFilename` set, the constructor clears GraphyCollection, each
/// alignment leaves three diagrams there, and the destructor writes the page. One object serves one
/// thread at a time.
class ZEL_EXPORT Ms1FeatureAlign
{
public:
    explicit Ms1FeatureAlign(const Ms1FeatureAlignSettings& settings);
    virtual ~Ms1FeatureAlign();
    Q_DISABLE_COPY_MOVE(Ms1FeatureAlign)

    /// Takes ownership of what makes the finder for the sum, in place of the factory held so far.
    void setMsFeatureFinderFactory(MsFeatureFinderFactory* factory);

    /// Aligns the features of one ion, one a sample; they are changed in place, all or none.
    ///
    /// `warpOffset` grows by the shift, so that a second call starts from the first one's axis. The
    /// intervals get the apex of the sample's own XIC; width, correlation and area are those of the
    /// sum, and the area that a finder gives is 0: MsFeatureFinderStage1::getAreaUnderCurve yields
    /// the sample's. XIC and matches stay. Fewer than two features, or those that the mode leaves
    /// out, stay as they are.
    /// \return kBadParameterError for a null feature, when no feature has an XIC or the grid would
    ///         have more than 10 million samples in all; kError when the XICs correlate too little
    ///         or nothing is found on the sum, or without a finder; else the finder's failure
    Error align(QList<Ms1Feature*>* features);

    /// The shift of each feature's curve, in grid steps; one of at most 8 times the largest width
    /// at half maximum.
    /// \param plots  as of uniformResample
    /// \param start  of the grid, minutes; shifts do not depend on it
    /// \return kBadParameterError unless there is one curve for each feature; kError for a step of
    ///         0 or less
    Error localAlign(const QList<QList<double>>& plots,
                     const QList<Ms1Feature*>& features,
                     double start,
                     double step,
                     QList<int>* shifts);

    /// Lays the XICs on one grid on the shared axis, from the earliest to the latest point. The
    /// step is the smallest distance of neighbouring points of any XIC, at most 1 minute. Sample k
    /// of a curve is the XIC's height at `start + k * step`; 0 where it has no points.
    /// \return kBadParameterError as of align
    static Error uniformResample(const QList<Ms1Feature*>& features,
                                 QList<QList<double>>* plots,
                                 double* start,
                                 double* end,
                                 double* step);

private:
    Result<std::unique_ptr<MsFeatureFinderBase>> newFinder() const;
    static Result<std::optional<Ms1Feature>> findFeaturesOnSummedPlot(
        const QList<double>& summed,
        double start,
        double step,
        MsFeatureFinderBase* finder,
        const QList<int>& shifts,
        const QList<Ms1Feature*>& features);

    Ms1FeatureAlignSettings m_settings;
    std::unique_ptr<MsFeatureFinderFactory> m_factory;
};

} // namespace zel
