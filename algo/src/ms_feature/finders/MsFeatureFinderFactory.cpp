#include "ms_feature/finders/MsFeatureFinderFactory.h"

#include "ms_feature/finders/MsFeatureFinder.h"
#include "ms_feature/finders/MsFeatureFinderPrototype.h"
#include "ms_feature/finders/MsFeatureFinderSeg.h"

namespace zel {

MsFeatureFinderFactory::~MsFeatureFinderFactory() = default;

MsFeatureFinderBase* MsFeatureFinderFactory::create(const MsFeatureFinderSettings& settings)
{
    using Mode = MsFeatureFinderSettings::Mode;
    switch (settings.mode) {
    case Mode::FixedWidth:
        return new MsFeatureFinder(settings);
    case Mode::Prototype:
        return new MsFeatureFinderPrototype(settings);
    case Mode::Adaptive:
        return new MsFeatureFinderSeg(settings);
    }
    return nullptr;
}

} // namespace zel
