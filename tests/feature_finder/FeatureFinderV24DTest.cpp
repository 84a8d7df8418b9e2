#include "feature_finder/finders/FeatureFinderV24D.h"

#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace zel::test {

namespace {

/// Opens the parameters to the tests.
class Finder : public FeatureFinderV24D
{
public:
    explicit Finder(const SettableFeatureFinderParameters& params)
    {
        EXPECT_THAT(init(params), IsOk());
    }
    using FeatureFinderBase::userParams;
};

SettableFeatureFinderParameters paramsOf(int ppmTolerance = 10)
{
    SettableFeatureFinderParameters params;
    params.ppmTolerance = ppmTolerance;
    params.maxD1Gap = 3;
    params.maxD2Gap = 4;
    params.minHillLengthD1 = 3;
    return params;
}

ChargeFeatureFrame clusterOf(int d1, double mass, double intensity, int apexD2 = 50, int charge = 2)
{
    ChargeFeatureFrame cluster;
    cluster.d1 = d1;
    cluster.monoIsotopicMass = mass;
    cluster.intensity = intensity;
    cluster.apexD2 = apexD2;
    cluster.startD2 = apexD2 - 10;
    cluster.endD2 = apexD2 + 5;
    cluster.charge = charge;
    return cluster;
}

using Points = QList<QList<QPointF>>; ///< (D1, intensity) of each link

Points pointsOf(const QList<ChargeFeatureBuilder4D>& builders)
{
    Points points;
    for (const ChargeFeatureBuilder4D& builder : builders) {
        points.append(builder.d1Xic());
    }
    return points;
}

/// The rules as they are told, each cluster compared with all links.
QList<ChargeFeatureBuilder4D> linkedByDefinition(QList<ChargeFeatureFrame> clusters,
                                                 const SettableFeatureFinderParameters& params)
{
    std::stable_sort(
        clusters.begin(), clusters.end(), [](const auto& a, const auto& b) { return a.d1 < b.d1; });
    QMap<int, QList<ChargeFeatureBuilder4D>> map;
    for (const ChargeFeatureFrame& f : clusters) {
        const auto fits = [&](const ChargeFeatureBuilder4D& b) {
            const auto d2 = b.d2Range();
            return b.charge() == f.charge &&
                   std::abs(b.apexMonoIsotopicMass() - f.monoIsotopicMass) <
                       f.monoIsotopicMass * params.ppmTolerance * 1e-6 &&
                   ((d2.start <= f.apexD2 && f.apexD2 <= d2.end) ||
                    std::abs(f.apexD2 - b.apexD2()) < params.maxD2Gap) &&
                   std::abs(b.d1Range().end - f.d1) <= params.maxD1Gap;
        };
        const int key = static_cast<int>(std::lround(f.monoIsotopicMass));
        bool isLinked = false;
        for (int m = key - 1; map.contains(key) && m <= key + 1 && !isLinked; ++m) {
            auto& builders = map[m];
            const auto b = std::find_if(builders.begin(), builders.end(), fits);
            if (b != builders.end()) {
                b->pushBackChargeFeatureFrame(f);
                isLinked = true;
            }
        }
        if (!isLinked) {
            map[key].append(ChargeFeatureBuilder4D());
            map[key].last().pushBackChargeFeatureFrame(f);
        }
    }
    QList<ChargeFeatureBuilder4D> all;
    for (const auto& builders : map) {
        all += builders;
    }
    return all;
}

/// A run of frames of two mobility scans.
QSharedPointer<msreader::InMemoryDataSource> mobilityRun(int frameCount,
                                                         const QList<QPointF>& points)
{
    QList<msreader::InMemoryScan> scans;
    for (int d1 = 1; d1 <= frameCount; ++d1) {
        for (int d2 = 1; d2 <= 2; ++d2) {
            scans.append(scanOf(msreader::MsScanId(d1, d2), 0.1 * d1, points));
        }
    }
    return sourceOf(scans);
}

} // namespace

TEST(FeatureFinderV24DTest, LinksClustersAsDefined)
{
    std::mt19937 random(8);
    const auto upTo = [&random](int n) { return std::uniform_int_distribution<>(0, n)(random); };
    QList<ChargeFeatureFrame> clusters;
    for (int i = 0; i < 3000; ++i) {
        const int d1 = upTo(60);
        const double mass = 998.0 + 0.01 * upTo(400);
        clusters.append(clusterOf(d1, mass, upTo(20), 20 + upTo(60), 2 + upTo(1)));
    }
    for (const int ppm : {0, 11, 100}) { // more than one, and tens of candidates
        EXPECT_EQ(pointsOf(Finder(paramsOf(ppm)).groupChargeFeatureFramesAcrossD1(clusters)),
                  pointsOf(linkedByDefinition(clusters, paramsOf(ppm))))
            << ppm;
    }
}

TEST(FeatureFinderV24DTest, CutsFeaturesAtTheirValleys)
{
    // Frames 10 to 30 with apexes at 13, 20 and 27, and valleys at 16 and 24.
    const QList<double> heights = {20,   200,  700, 1000, 700, 200, 20,  300, 1200, 2500, 3000,
                                   2500, 1200, 300, 20,   200, 700, 900, 600, 200,  20};
    ChargeFeatureBuilder4D builder;
    for (int i = 0; i < heights.size(); ++i) {
        ChargeFeatureFrame cluster = clusterOf(10 + i, 1000.0 + 0.001 * i, heights[i] + 0.9);
        cluster.mzApexOfCluster = 501.0;
        cluster.mzFirstOfCluster = 500.5;
        cluster.averagine = 0.9;
        cluster.isotopeCount = 4;
        cluster.monoOffset = 1;
        builder.pushBackChargeFeatureFrame(cluster);
    }
    ChargeFeatureBuilder4D tooShort;
    tooShort.pushBackChargeFeatureFrame(clusterOf(1, 900.0, 5.0));
    tooShort.pushBackChargeFeatureFrame(clusterOf(2, 900.0, 5.0));

    const QList<ChargeFeature> pieces =
        valueOf(Finder(paramsOf()).splitChargeFeatures({tooShort, builder}));
    ChargeFeature whole;
    whole.mzApexOfCluster = 501.0;
    whole.mzFirstOfCluster = 500.5;
    whole.monoIsotopicMass = 1000.010;
    whole.apexIntensity = 3000; // cut
    whole.averagineScore = 0.9;
    whole.startD1 = 10.0;
    whole.endD1 = 32.0; // the last frame is the sum of three
    whole.apexD1 = 20.0;
    whole.startD2 = 40.0;
    whole.endD2 = 55.0;
    whole.apexD2 = 50.0;
    whole.isotopeCount = 4;
    whole.charge = 2;
    whole.monoOffset = 1;
    QList<ChargeFeature> expected = {whole, whole, whole};
    expected[0].endD1 = expected[1].startD1 = 16.0;
    expected[1].endD1 = expected[2].startD1 = 24.0;
    EXPECT_EQ(pieces, expected);
    tooShort.pushBackChargeFeatureFrame(clusterOf(3, 900.0, 5.0));
    EXPECT_EQ(valueOf(Finder(paramsOf()).splitChargeFeatures({tooShort})).size(), 1) << "3 frames";

    auto params = paramsOf();
    params.peakSplitterOptions.valleyRatio = 1e9;
    EXPECT_EQ(valueOf(Finder(params).splitChargeFeatures({builder})), QList<ChargeFeature>{whole});
    params.peakSplitterOptions.valleyRatio = -1.0;
    EXPECT_THAT(Finder(params).splitChargeFeatures({builder}), HasError(kBadParameterError));
}

TEST(FeatureFinderV24DTest, SummingAllFramesReplacesTheParameters)
{
    const auto source = mobilityRun(5, {{500.0, 1.0}});
    auto params = paramsOf(33);
    params.numberOfFramesToSum = 0;
    Finder finder(params);
    EXPECT_EQ(finder.userParams().mzKernelWidth, 35); // forced, as is the grid
    EXPECT_EQ(finder.userParams().mzHashFactor, 500.0);
    FeatureFinderV24DScansHandler handler;
    ASSERT_THAT(finder.initPerMsFile(source.get(), &handler), IsOk());
    EXPECT_EQ(handler.numberOfFramesToSum(), 5);
    EXPECT_EQ(finder.userParams().numberOfFramesToSum, 5);
    EXPECT_EQ(finder.userParams().minHillLengthD1, -1);
    EXPECT_EQ(finder.userParams().ppmTolerance, SettableFeatureFinderParameters().ppmTolerance);
    EXPECT_EQ(finder.userParams().maxD1Gap, SettableFeatureFinderParameters().maxD1Gap);
}

TEST(FeatureFinderV24DTest, WalksOverTheFramesThatAreAskedFor)
{
    class Reads : public SourceProbe
    {
    public:
        using SourceProbe::scanData;
        using SourceProbe::SourceProbe;
        Result<QList<QPointF>> scanData(const msreader::MsQuery& query) override
        {
            d1s.insert(static_cast<int>(*query.scanId()->d1));
            return SourceProbe::scanData(query);
        }
        QSet<int> d1s;
    };
    const auto source = mobilityRun(12, {{500.0, 100.0}}); // one hill in each, and no cluster
    Reads reads(source.get());
    const auto sink = QSharedPointer<RecordingSink>::create();
    Finder finder(paramsOf());
    finder.setStartStopD1(5, 8);
    EXPECT_TRUE(valueOf(finder.findFeatures(&reads, sink)).isEmpty());
    EXPECT_EQ(reads.d1s, (QSet<int>{5, 6, 7, 8, 9, 10})); // the windows of 5 to 8
    EXPECT_EQ(sink->log.count(QStringLiteral("step;")), 9);

    sink->canceled = true;
    EXPECT_THAT(finder.findFeatures(source.get(), sink), HasError(kOperationCanceledError));
    EXPECT_TRUE(
        valueOf(Finder(paramsOf()).findFeatures(mobilityRun(12, {}).get(), nullptr)).isEmpty());
    EXPECT_THAT(Finder(paramsOf()).findFeatures(mobilityRun(2, {}).get(), nullptr),
                HasError(kError)); // of 3
}

} // namespace zel::test
