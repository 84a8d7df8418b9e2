#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"

namespace zel {

/// Fits one time window to the XIC by hill climbing. The score of a window is the signal inside it
/// times a penalty that fades the score of windows wider than a limit; the climb starts with
/// `2 * xicAreaTimeWindow` around the highest point between the first and the last match, and
/// shifts, widens and narrows it by steps that shrink when none helps.
///
/// Windows are passed as a QPointF that holds the two ends in any order, minutes. Curves are
/// (minutes, intensity).
class ZEL_EXPORT MsFeatureFinderPrototype : public MsFeatureFinderBase
{
public:
    explicit MsFeatureFinderPrototype(const MsFeatureFinderSettings& settings);
    ~MsFeatureFinderPrototype() override;

protected:
    /// Goes by the reference matches alone; `psms` is not read. The apex is the highest sample
    /// between the first and the last match of the XIC laid on 250 to 500 samples; it stays (0, 0)
    /// when none lies there, as for a single match that hits no sample.
    /// \return one interval; kError for an XIC without points, kBadParameterError for one without
    ///         an extent
    Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                  const PlotBase& xic) const override;

private:
    double XicWindowScore(double start, double end) const;
    double calculateXICIntervalScore(const QList<QPointF>& points, const QPointF& range);
    double calculateXICIntervalScorePreint(const QList<QPointF>& cumulative,
                                           double rate,
                                           double firstX,
                                           const QPointF& range) const;
    Error optimize(const QList<QPointF>& cumulative,
                   double rate,
                   double firstX,
                   double center,
                   QPointF* range) const;
    static Error findApex(const QList<QPointF>& points, double start, double end, QPointF* apex);
    static Error preintegrate(QList<QPointF>* points);
    static Error easeInOutPlot(QList<QPointF>* points, double start, double end);
};

} // namespace zel
