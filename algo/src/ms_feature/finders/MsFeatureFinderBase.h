#pragma once

#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/MsDataTypes.h"
#include "common/ms_types/XicWindow.h"
#include "common/stable/Export.h"
#include "common/stable/Progress.h"
#include "common/stable/Result.h"
#include "ms_feature/records/Ms1Feature.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"
#include "ms_feature/records/PeptideSpectrumMatch.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <optional>

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader

/// Finds the MS1 feature of each peptide ion of a set: cuts an XIC around the ion's matches, marks
/// each match with the highest point near it, and asks `findFeature`, which a finder overrides, for
/// the time intervals on the XIC.
///
/// Holds the matches of the ion in hand, so that one object serves one thread at a time; it may be
/// used for any number of runs.
class ZEL_EXPORT MsFeatureFinderBase
{
public:
    /// The matches of each peptide ion, by peptide hash.
    using PsmsByHash = QHash<QString, QList<PeptideSpectrumMatch>>;

    explicit MsFeatureFinderBase(const MsFeatureFinderSettings& settings);
    virtual ~MsFeatureFinderBase();
    Q_DISABLE_COPY_MOVE(MsFeatureFinderBase)

    /// Finds the features of all ions of a run.
    ///
    /// The XIC of an ion is cut at the mass and charge of its best match, from the earliest to the
    /// latest match, widened by `xicTimeWindowToExtract()` and cut at the run's ends. All XICs come
    /// in one request of the source, or ion by ion with WeightedHarmonicMean. The area of each
    /// interval is in intensity * seconds.
    /// \param filter      what to read the spectra as; without a value, the source's native way
    /// \param reader      borrowed
    /// \param psmsByHash  the lists come back with the `apex` of their matches filled, as far as
    ///                    the ion has an XIC
    /// \param progress    one step for each feature found; may be null
    /// \return one entry for each key, in the order of the sorted keys (case-sensitive); an entry
    ///         without a value where there is no match, no XIC or no feature. kError without a
    ///         reader or when it gives another number of XICs than asked for;
    ///         kOperationCanceledError; or the failure of its time range. An XIC that cannot be
    ///         cut, and a finder that fails on it, only cost that ion.
    Result<QList<std::optional<Ms1Feature>>> constructXicWindow(
        const XicWindowFactory& factory,
        const std::optional<msreader::PeakPickingFilter>& filter,
        msreader::MsDataSourceInterface* reader,
        PsmsByHash* psmsByHash,
        QSharedPointer<ProgressBarInterface> progress);

protected:
    /// Finds the feature of one peptide ion on its XIC. The three reference matches are those of
    /// this ion during the call. Only the time intervals need be filled, with apex, width and
    /// correlation; matches, plot, hash and areas are filled by the caller.
    /// \return an empty optional when there is no feature
    virtual Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                          const PlotBase& xic) const = 0;

    /// The earliest, the latest and the best match of the ion; of several equal ones the first.
    const PeptideSpectrumMatch& firstPSM() const { return m_firstPSM; }
    const PeptideSpectrumMatch& lastPSM() const { return m_lastPSM; }
    const PeptideSpectrumMatch& maxScorePSM() const { return m_maxScorePSM; }
    const MsFeatureFinderSettings& settings() const { return m_settings; }
    /// The hash of the best match.
    QString peptideHash() const;

    /// Lays a plot on a regular grid: sample i stands at the middle of bin i of `sampleCount` equal
    /// bins from `start` to `end`, at the mean height of the plot inside the bin.
    /// \param start, end  a negative one stands for the whole plot
    /// \return kBadParameterError for an empty plot or bins without width
    static Error resamplePlot(
        const PlotBase& plot, QList<QPointF>* out, int sampleCount, double start, double end);

    /// A feature of one interval with this apex, its width at half maximum measured on the XIC.
    static Result<std::optional<Ms1Feature>> singlePeak(const PlotBase& xic,
                                                        const Interval<double>& interval,
                                                        const QPointF& apex);

private:
    friend class XicIntegrator;   // asks findFeature without a run
    friend class Ms1FeatureAlign; // runs findFeature on the sum of several XICs

    using TimeSet = math::ClosedMultiInterval<double, 6>;

    void setReferencePsms(const QList<PeptideSpectrumMatch>& psms);
    std::optional<XicWindow> xicWindow(const XicWindowFactory& factory,
                                       const TimeSet& runTimes) const;
    QList<QPointF> multiIsotopeXic(const XicWindow& window,
                                   const XicWindowFactory& factory,
                                   msreader::MsDataSourceInterface* reader,
                                   const QString& mods) const;
    Result<QList<QList<QPointF>>> cutXics(const XicWindowFactory& factory,
                                          const std::optional<msreader::PeakPickingFilter>& filter,
                                          msreader::MsDataSourceInterface* reader,
                                          const QStringList& keys,
                                          const PsmsByHash& psmsByHash,
                                          const QSharedPointer<ProgressBarInterface>& progress);
    std::optional<Ms1Feature> featureOf(const QString& key,
                                        const QList<QPointF>& points,
                                        QList<PeptideSpectrumMatch>* psms);
    void assignApex(const PlotBase& plot, PeptideSpectrumMatch* psm) const;

    PeptideSpectrumMatch m_firstPSM;
    PeptideSpectrumMatch m_lastPSM;
    PeptideSpectrumMatch m_maxScorePSM;
    MsFeatureFinderSettings m_settings;
};

} // namespace zel
