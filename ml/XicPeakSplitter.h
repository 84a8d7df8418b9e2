#pragma once

#include "common/core_mini/src/algo/parameters/XicDetectionOptions.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <memory>
#include <utility>

namespace zel {

/// Finds the valleys at which the trace of one peak falls apart into several.
///
/// Which maxima count is decided by their topological persistence (Edelsbrunner, Letscher &
/// Zomorodian 2002, doi:10.1007/s00454-002-2885-2): the trace, smoothed by one sample, is flooded
/// from above; where two islands meet, the lower one is a peak of its own when its height stands
/// out of the saddle by `valleyRatio` and by `noiseFactor` times the noise, and is not below
/// `minRelativeHeight` of the tallest. There is no width to set, and all goes by sample, so that x
/// may be minutes or frame numbers. A shoulder without a valley is not split.
///
/// Serves one thread at a time.
class ZEL_EXPORT XicPeakSplitter
{
public:
    XicPeakSplitter();
    ~XicPeakSplitter();
    XicPeakSplitter(const XicPeakSplitter&) = delete;
    XicPeakSplitter& operator=(const XicPeakSplitter&) = delete;

    /// Takes over the options; before it, they stand at their defaults.
    /// \return kBadParameterError, with nothing changed, for a ratio or factor that is negative or
    ///         not finite
    Error init(const XicPeakSplitterOptions& options);

    /// The split positions, ascending: for each two neighbouring maxima the x of the lowest sample
    /// between them, the first one of several. The weight beside it is 1 - saddle / lower maximum,
    /// from 0 (no valley) to 1 (down to nothing). \param xicOfOnePeak  (minutes, intensity), times
    /// not descending \return kBadParameterError when a value is not finite or the times descend
    Result<QList<std::pair<double, double>>> splitXIC(const QList<QPointF>& xicOfOnePeak);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace zel
