#include "MultiIsotopeXic.h"

#include "MultiIsotopeXicFold_p.h"
#include "chemical_model/ChemicalFactory.h"
#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"
#include "tests/support/Runs.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::HasError;
using test::IsOk;
using test::pointsOf;
using test::SourceProbe;
using test::valueOf;
using ::testing::ElementsAre;

namespace {

constexpr double kDeamidationShift = 0.984016;
constexpr double kEveryIsotope = 2.0; ///< shares sum to 1, so no pattern exceeds this
/// Wide enough that the isotopes of one form fall into the windows of the other (19 ppm apart at
/// m/z 500, 2+).
constexpr double kWidePpm = 30.0;
constexpr double kNarrowPpm = 5.0;

const QList<double> kHeights = {0, 10, 40, 10, 0};

/// A run in which an ion of this pattern elutes with the heights above, one scan a minute.
QSharedPointer<msreader::InMemoryDataSource> runWith(const QList<QPointF>& pattern)
{
    QList<msreader::InMemoryScan> scans;
    for (qsizetype i = 0; i < kHeights.size(); ++i) {
        QList<QPointF> points;
        for (const QPointF& isotope : pattern) {
            points.append(QPointF(isotope.x(), isotope.y() * kHeights[i]));
        }
        scans.append(test::scanOf(i + 1, static_cast<double>(i), points));
    }
    return test::sourceOf(scans);
}

QList<QPointF> averagine(double mass, int charge)
{
    return AveragineGenerator(mass).generateSignal(charge);
}

/// The sum of all isotopes of a form, by its mass or molecule, from 0 to 10 min.
template <typename Form>
Result<QList<QPointF>> sumXic(const Form& form,
                              double ppm,
                              msreader::MsDataSourceInterface* source,
                              bool isDeamidated)
{
    constexpr auto sum = MultiIsotopeXic::XicAggregationSum;
    return MultiIsotopeXic().xic(
        form, 2, {}, ppm, -1.0, 10.0, 0, kEveryIsotope, source, sum, isDeamidated);
}

void expectHeights(const Result<QList<QPointF>>& xic, double factor)
{
    ASSERT_THAT(xic, IsOk());
    ASSERT_EQ(xic.value().size(), kHeights.size());
    for (qsizetype i = 0; i < kHeights.size(); ++i) {
        EXPECT_EQ(xic.value()[i].x(), static_cast<double>(i));
        EXPECT_NEAR(xic.value()[i].y(), factor * kHeights[i], 1e-9) << "point " << i;
    }
}

QList<double> heightsOf(const QList<QPointF>& xic)
{
    QList<double> heights;
    for (const QPointF& point : xic) {
        heights.append(point.y());
    }
    return heights;
}

} // namespace

TEST(MultiIsotopeXicTest, TakesTheOtherFormsSignalOffByMass)
{
    constexpr double mass = 998.0;
    const auto lightRun = runWith(averagine(mass, 2));
    const auto heavyRun = runWith(averagine(mass + kDeamidationShift, 2));
    expectHeights(sumXic(mass, kNarrowPpm, lightRun.get(), false), 1.0);
    expectHeights(sumXic(mass, kWidePpm, lightRun.get(), false), 1.0);
    expectHeights(sumXic(mass + kDeamidationShift, kNarrowPpm, heavyRun.get(), true), 1.0);
    // The deamidated form is not there: its windows hold the light form's isotopes from the second
    // on, which go.
    expectHeights(sumXic(mass + kDeamidationShift, kWidePpm, lightRun.get(), true), 0.0);
}

TEST(MultiIsotopeXicTest, TakesTheOtherFormsSignalOffByMolecule)
{
    const auto factory = chem::defaultChemicalFactory();
    const chem::Molecule molecule =
        valueOf(factory->constructMolecule(QStringLiteral("C50H71N13O12")));
    const chem::Molecule deamidated =
        valueOf(factory->constructMolecule(QStringLiteral("C50H70N12O13")));
    QList<QPointF> pattern;
    ASSERT_THAT(factory->generateIsotopeEnvelope(molecule, 2, &pattern, 1), IsOk());
    const auto run = runWith(pattern);
    expectHeights(sumXic(molecule, kNarrowPpm, run.get(), false), 1.0);
    expectHeights(sumXic(deamidated, kWidePpm, run.get(), true), 0.0);
    // This form subtracts the overlapping windows as they are: with f the share of the first
    // isotope, 1 - (1 - f)^2.
    const double f = pattern.constFirst().y();
    expectHeights(sumXic(molecule, kWidePpm, run.get(), false), 1 - (1 - f) * (1 - f));
}

TEST(MultiIsotopeXicTest, AsksOnceForAllIsotopesOfAForm)
{
    const auto run = runWith(averagine(998.0, 2));
    SourceProbe probe(run.get());
    ASSERT_THAT(sumXic(998.0, kNarrowPpm, &probe, false), IsOk());
    ASSERT_EQ(probe.xicCounts.size(), 2);
    EXPECT_EQ(probe.xicCounts[0], averagine(998.0, 2).size());

    probe.xicCounts.clear();
    const auto first = MultiIsotopeXic().xic(
        998.0, 2, {}, 5.0, -1.0, 10.0, 0, 0.1, &probe, MultiIsotopeXic::XicAggregationWhm, true);
    ASSERT_THAT(first, IsOk());
    EXPECT_EQ(probe.xicCounts, (QList<qsizetype>{1, 1}))
        << "the first isotope alone exceeds the limit";

    constexpr auto sum = MultiIsotopeXic::XicAggregationSum;
    EXPECT_THAT(MultiIsotopeXic().xic(998.0, 2, {}, 5.0, 20.0, 30.0, 0, 0.1, &probe, sum, false),
                HasError(kError, "Cannot subtract XICs of different size."))
        << "no scan lies in the time span";
}

TEST(MultiIsotopeXicTest, FoldsByTheHarmonicMeanAboveTheFloor)
{
    constexpr double c = 0.025;
    const QList<double> weights = {0.6, 0.4};
    const auto mean = [&weights](const QList<double>& values) {
        return valueOf(weightedHarmonicMean(values, weights, c));
    };
    // Equal values v: (v + c - 1.1 c) * 2 * 0.6, by hand.
    EXPECT_NEAR(mean({10, 10}), (10 - 0.1 * c) * 1.2, 1e-12);
    // The second isotope is missing: 1 / (0.6 / 10.025 + 0.4 / 0.025), less 1.1 c, times 1.2.
    EXPECT_NEAR(mean({10, 0}), (1 / (0.6 / 10.025 + 16.0) - 0.0275) * 1.2, 1e-12);
    EXPECT_EQ(mean({0, 0}), 0.0);

    const QList<double> noValues;
    EXPECT_THAT(weightedHarmonicMean(noValues, noValues, c),
                HasError(kError, "Input vectors must have the same non-zero size."));
    EXPECT_THAT(weightedHarmonicMean(QList<double>{1, 2}, QList<double>{0.5, 0.0}, c),
                HasError(kError, "Weights must be positive and non-zero."));

    EXPECT_THAT(whmXics({pointsOf({1, 2})}, weights, {}), HasError(kError, "Error in whmXics."));
    EXPECT_THAT(whmXics({pointsOf({1, 2}), pointsOf({1})}, weights, {}), HasError(kError));
    const QList<QPointF> folded =
        valueOf(whmXics({pointsOf({0, 10}), pointsOf({0, 10})}, weights, {}));
    EXPECT_EQ(folded[0].y(), 0.0);
    EXPECT_NEAR(folded[1].y(), (10 - 0.1 * c) * 1.2, 1e-12)
        << "the offset is a 400th of the tallest isotope";
}

TEST(MultiIsotopeXicTest, LiftsTheOffsetByTheBasePeak)
{
    MultiIsotopeXic::WHMParams params;
    params.useBasePeakFloor = true;
    const auto foldedAt = [&params](const QList<double>& basePeaks) {
        params.basePeakIntensities = basePeaks;
        return heightsOf(
            valueOf(whmXics({pointsOf({10, 10, 10}), pointsOf({2, 2, 2})}, {0.6, 0.4}, params)));
    };
    const double plain = foldedAt({})[0];
    EXPECT_EQ(foldedAt({0})[0], plain) << "0 / 0 leaves the offset alone";
    EXPECT_NEAR(foldedAt({10})[0], plain, 1e-6) << "a base peak of the ion itself changes nothing";
    const QList<double> lifted = foldedAt({10, 1000});
    EXPECT_NE(lifted[1], lifted[0]);
    EXPECT_EQ(lifted[2], lifted[1]) << "the last base peak serves all later points";
}

TEST(MultiIsotopeXicTest, SmoothsOverWholeNeighbours)
{
    const QList<QList<QPointF>> xics = {pointsOf({0, 6, 0, 0, 30})};
    EXPECT_THAT(heightsOf(smoothXics(xics, 2)[0]), ElementsAre(3, 2, 2, 10, 15));
    EXPECT_THAT(heightsOf(smoothXics(xics, 4)[0]), ElementsAre(2, 1.5, 7.2, 9, 10))
        << "an even 4 takes 5 points";
    for (const int none : {1, 0, -1}) {
        EXPECT_EQ(smoothXics(xics, none), xics);
    }
}

TEST(MultiIsotopeXicTest, SubtractsFormsThatAreAlreadyCut)
{
    const MultiIsotopeXic folder;
    const QList<QPointF> all = pointsOf({100, 100});
    const QList<QPointF> none = pointsOf({0, 0});
    const QList<double> weights = {0.5, 0.3, 0.15, 0.05};
    const double heavy =
        valueOf(folder.WHMSubtractionTest(none, all, all, all, all, weights))[0].y();
    EXPECT_GT(heavy, 0.0);
    const double both = valueOf(folder.WHMSubtractionTest(all, all, all, all, all, weights))[0].y();
    EXPECT_NEAR(both, 0.5 * valueOf(whmXics({all, all, all, all}, weights, {}))[0].y(), 1e-9);
    EXPECT_LT(both, heavy);
    EXPECT_THAT(valueOf(subtract(pointsOf({5, 1}), pointsOf({4, 4}), 0.5)),
                ElementsAre(QPointF(0, 3), QPointF(1, 0)));
    EXPECT_THAT(folder.WHMSubtractionTest(all, all, all, pointsOf({1}), all, weights),
                HasError(kError));
    EXPECT_THAT(subtract(pointsOf({1, 2}), QList<QPointF>{{0, 1}, {1.5, 2}}, 0.5),
                HasError(kError, "Retention times should be equivalent, check input params."));
    EXPECT_THAT(subtract({}, {}, 0.5), HasError(kError, "Cannot subtract XICs of different size."));
}

} // namespace zel
