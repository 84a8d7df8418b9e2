#pragma once

#include "common/stable/Export.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"

#include <QLatin1StringView>

namespace zel {

class MsFeatureFinderBase;

/// The key under which a tool keeps in its own settings whether it uses MsFeatureFinderSegV2 for
/// adaptive mode. The library does not read it: its factory goes by the mode alone.
inline constexpr QLatin1StringView kEnableMsFFSegV2Key("FeatureFinder/EnableMsFFSegV2");

/// Makes targeted finders. Override `create` to hand your own finders to the classes of the library
/// that hold a factory.
class ZEL_EXPORT MsFeatureFinderFactory
{
public:
    virtual ~MsFeatureFinderFactory();

    /// The finder that the mode of the settings names, owned by the caller; null for any other
    /// mode.
    virtual MsFeatureFinderBase* create(const MsFeatureFinderSettings& settings);
};

} // namespace zel
