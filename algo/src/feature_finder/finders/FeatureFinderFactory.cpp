#include "feature_finder/finders/FeatureFinderFactory.h"

#include "feature_finder/finders/FeatureFinderV2.h"
#include "feature_finder/finders/FeatureFinderV24D.h"

namespace zel {

namespace {

/// Null for a version that there is no finder for.
QSharedPointer<FeatureFinderBase> finderOfVersion(int version)
{
    switch (version) {
    case 1:
        return QSharedPointer<FeatureFinderV2>::create();
    case 2:
        return QSharedPointer<FeatureFinderV24D>::create();
    default:
        return {};
    }
}

} // namespace

Result<QSharedPointer<FeatureFinderBase>> FeatureFinderFactory::featureFinderFactoryInit(
    const SettableFeatureFinderParameters& params)
{
    Error e;
    auto finder = finderOfVersion(params.featureFinderVersion);
    if (!finder) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("There is no feature finder of version %1")
                             .arg(params.featureFinderVersion));
    }
    ZEL_RETURN_IF_ERROR(finder->init(params));
    return finder;
}

} // namespace zel
