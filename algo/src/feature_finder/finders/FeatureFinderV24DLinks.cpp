#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "feature_finder/finders/FeatureFinderV24D.h"
#include "ml/XicPeakSplitter.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

// From the clusters of single frames to charge features: links along retention, and their splits.

namespace zel {

namespace {

/// Links clusters that come by ascending D1.
class ClusterLinker
{
public:
    explicit ClusterLinker(const SettableFeatureFinderParameters& params)
        : m_params(params)
    {}

    void add(const ChargeFeatureFrame& cluster)
    {
        const auto dalton =
            static_cast<long long>(MathUtils::truncateToInt(std::round(cluster.monoIsotopicMass)));
        if (m_daltons.find(dalton) != m_daltons.end()) {
            for (long long probed = dalton - 1; probed <= dalton + 1; ++probed) {
                if (Link* const link = findLink(m_daltons[probed], cluster)) {
                    link->push(cluster);
                    return;
                }
            }
        }
        Dalton& own = m_daltons[dalton];
        own.open.push_back(own.links.size());
        own.links.emplace_back();
        own.links.back().push(cluster);
    }

    QList<ChargeFeatureBuilder4D> take() const
    {
        QList<ChargeFeatureBuilder4D> builders;
        for (const auto& [dalton, links] : m_daltons) {
            for (const Link& link : links.links) {
                builders.append(link.builder);
            }
        }
        return builders;
    }

private:
    /// A link, with what its strongest cluster says and where it ends.
    struct Link
    {
        ChargeFeatureBuilder4D builder;
        double mass = 0.0;
        int charge = 0;
        int apexD2 = 0;
        Interval<int> d2;
        int endD1 = 0;

        void push(const ChargeFeatureFrame& cluster)
        {
            builder.pushBackChargeFeatureFrame(cluster);
            mass = builder.apexMonoIsotopicMass();
            charge = builder.charge();
            apexD2 = builder.apexD2();
            d2 = builder.d2Range();
            endD1 = cluster.d1;
        }
    };

    struct Dalton
    {
        std::vector<Link> links;
        std::vector<std::size_t> open; ///< indices of the links that may still be joined, ascending
    };

    Link* findLink(Dalton& dalton, const ChargeFeatureFrame& cluster) const
    {
        std::erase_if(dalton.open, [&](std::size_t index) {
            return std::abs(1LL * dalton.links[index].endD1 - cluster.d1) > m_params.maxD1Gap;
        });
        const auto fitting =
            std::find_if(dalton.open.begin(), dalton.open.end(), [&](std::size_t index) {
                return fits(dalton.links[index], cluster);
            });
        return fitting == dalton.open.end() ? nullptr : &dalton.links[*fitting];
    }

    /// Whether a cluster fits a link that has not ended.
    bool fits(const Link& link, const ChargeFeatureFrame& cluster) const
    {
        const double tolerance = FeatureFinderUtilities::calculatePPMTolerance(
            cluster.monoIsotopicMass, m_params.ppmTolerance);
        return link.charge == cluster.charge &&
               std::abs(link.mass - cluster.monoIsotopicMass) < tolerance &&
               ((link.d2.start <= cluster.apexD2 && cluster.apexD2 <= link.d2.end) ||
                std::abs(1LL * cluster.apexD2 - link.apexD2) < m_params.maxD2Gap);
    }

    const SettableFeatureFinderParameters& m_params;
    std::map<long long, Dalton> m_daltons;
};

/// The whole link as one feature. Its last frame is the sum of several, which it reaches over.
ChargeFeature featureOf(const ChargeFeatureBuilder4D& builder, int numberOfFramesToSum)
{
    ChargeFeature feature;
    feature.monoIsotopicMass = builder.apexMonoIsotopicMass();
    feature.mzApexOfCluster = builder.mzApexOfCluster();
    feature.monoOffset = builder.monoOffsetOfMzApexOfCluster();
    feature.mzFirstOfCluster = builder.mzFirstOfCluster();
    feature.charge = builder.charge();
    feature.isotopeCount = MathUtils::truncateToInt(builder.apexIsotopeCount());
    feature.apexIntensity = MathUtils::truncateToInt(builder.apexIntensity());
    feature.averagineScore = builder.apexAveragine();
    feature.startD1 = builder.d1Range().start;
    feature.endD1 = static_cast<double>(builder.d1Range().end) - 1.0 + numberOfFramesToSum;
    feature.apexD1 = builder.apexD1();
    feature.startD2 = builder.d2Range().start;
    feature.endD2 = builder.d2Range().end;
    feature.apexD2 = builder.apexD2();
    return feature;
}

/// Appends the pieces of a feature between its ends and the first members of the splits.
void appendPieces(ChargeFeature feature,
                  QList<std::pair<double, double>> splits,
                  QList<ChargeFeature>* features)
{
    std::stable_sort(splits.begin(), splits.end(), [](const auto& a, const auto& b) {
        return a.first < b.first;
    });
    const double end = feature.endD1;
    for (const auto& [cut, weight] : std::as_const(splits)) {
        feature.endD1 = cut;
        features->append(feature);
        feature.startD1 = cut;
    }
    feature.endD1 = end;
    features->append(feature);
}

} // namespace

QList<ChargeFeatureBuilder4D> FeatureFinderV24D::groupChargeFeatureFramesAcrossD1(
    const QList<ChargeFeatureFrame>& frames)
{
    QList<ChargeFeatureFrame> byD1 = frames;
    std::stable_sort(
        byD1.begin(), byD1.end(), [](const ChargeFeatureFrame& a, const ChargeFeatureFrame& b) {
            return a.d1 < b.d1;
        });
    ClusterLinker linker(userParams());
    for (const ChargeFeatureFrame& cluster : std::as_const(byD1)) {
        linker.add(cluster);
    }
    return linker.take();
}

Result<QList<ChargeFeature>> FeatureFinderV24D::splitChargeFeatures(
    const QList<ChargeFeatureBuilder4D>& builders)
{
    Error e;
    XicPeakSplitter splitter;
    ZEL_RETURN_IF_ERROR(splitter.init(userParams().peakSplitterOptions));
    QList<ChargeFeature> features;
    for (const ChargeFeatureBuilder4D& builder : builders) {
        const QList<QPointF> xic = builder.d1Xic();
        if (xic.size() < userParams().minHillLengthD1) {
            continue;
        }
        ZEL_ASSIGN_OR_RETURN(const auto splits, splitter.splitXIC(xic));
        appendPieces(featureOf(builder, userParams().numberOfFramesToSum), splits, &features);
    }
    qCDebug(algoLog) << "SPLIT FEATURES SIZE" << features.size();
    return features;
}

} // namespace zel
