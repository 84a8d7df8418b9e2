#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"

namespace zel {

/// The finder with a window of fixed width, `2 * xicAreaTimeWindow`, around one time. That time is
/// the apex of the match with the highest apex if the best match is wild type. Else it is the
/// median, the later one of two, of the apexes of the ten best matches in the order of their scan
/// times, so that a few matches on a neighbouring peak of equal mass do not decide.
class ZEL_EXPORT MsFeatureFinder : public MsFeatureFinderBase
{
public:
    explicit MsFeatureFinder(const MsFeatureFinderSettings& settings);
    ~MsFeatureFinder() override;

protected:
    /// A start that is cut at the XIC's begin moves the end too, so that the window keeps its
    /// width; an end that is cut leaves the start.
    /// \return one interval; kError for an XIC of fewer than two points, or when no match lies
    ///         within `xicTimeWindowToExtract()` of the span from the first to the last match and
    ///         on the XIC
    Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                  const PlotBase& xic) const override;

private:
    Result<QList<PeptideSpectrumMatch>> psmsOnXic(const QList<PeptideSpectrumMatch>& psms,
                                                  const PlotBase& xic) const;
    double apexTime(const QList<PeptideSpectrumMatch>& psms) const;
};

} // namespace zel
