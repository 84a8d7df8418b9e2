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

    /// The penalty of a window's width: 1 without width, 0 from `prototypeElasticity` times
    /// `xicAreaTimeWindow` on, (1 + cos(pi * share^prototypePower)) / 2 in between.
    double XicWindowScore(double start, double end) const;

    /// The score of a window on a curve: the sum of its points inside, times the penalty. The climb
    /// uses the next one.
    double calculateXICIntervalScore(const QList<QPointF>& points, const QPointF& range);

    /// The same in constant time on a regular curve of running sums. A time in the first half of a
    /// sample's slot reads the sample before.
    /// \param rate    samples per minute
    /// \param firstX  where the first slot begins
    double calculateXICIntervalScorePreint(const QList<QPointF>& cumulative,
                                           double rate,
                                           double firstX,
                                           const QPointF& range) const;

    /// Climbs to the window with the best score. At most 601 windows are scored.
    /// \param center  the middle of the window to start with
    /// \param range   the ends, ascending
    /// \return kError for fewer than two points
    Error optimize(const QList<QPointF>& cumulative,
                   double rate,
                   double firstX,
                   double center,
                   QPointF* range) const;

    /// Raises `apex` to the highest point from `start` to `end`, the first one of several.
    /// \return kError when no point there is higher than `apex` on entry, which then stays
    static Error findApex(const QList<QPointF>& points, double start, double end, QPointF* apex);

    /// Replaces each y by the sum of all y up to and including it.
    static Error preintegrate(QList<QPointF>* points);

    /// Fades a curve to zero outside the window, over flanks that reach half-way to the ends of the
    /// curve for a narrow window and all the way for a wide one. `findFeature` does without.
    static Error easeInOutPlot(QList<QPointF>* points, double start, double end);
};

} // namespace zel
