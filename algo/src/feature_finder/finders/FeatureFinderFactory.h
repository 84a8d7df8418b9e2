#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QSharedPointer>

namespace zel {

class FeatureFinderBase;

/// Makes finders of untargeted features.
class ZEL_EXPORT FeatureFinderFactory
{
public:
    /// The finder that `featureFinderVersion` names, initialized with the parameters. It does not
    /// look at data: whether a source suits it shows when it runs.
    ///
    /// 1 is FeatureFinderV2, for runs without ion mobility; 2 is FeatureFinderV24D, for runs with
    /// it.
    /// \return kBadParameterError for a version that there is no finder for, or the finder's
    ///         failure to initialize
    static Result<QSharedPointer<FeatureFinderBase>> featureFinderFactoryInit(
        const SettableFeatureFinderParameters& params);
};

} // namespace zel
