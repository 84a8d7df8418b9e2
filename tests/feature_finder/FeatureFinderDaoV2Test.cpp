#include "feature_finder/dao/FeatureFinderDaoV2.h"

#include "common/stable/SqlQuery.h"
#include "common/stable/SqliteConnection.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace zel::test {

namespace {

class FeatureFinderDaoV2Test : public ::testing::Test
{
protected:
    QString folder() const { return m_dir.path(); }
    QString ftrsPath() const { return folder() + QStringLiteral("/run.1.ftrs"); }

    Error write(const QList<MasterFeature>& masters)
    {
        return FeatureFinderDaoV2().createFtrs(kSourcePath, folder(), masters);
    }

    /// All rows of a query, one list of values a row.
    QList<QVariantList> rows(const char* statement) const
    {
        const db::Connection connection = valueOf(db::openLocalSqliteDb(
            ftrsPath(), db::OpenPolicy::ExistingOnly, QStringLiteral("reader of the test")));
        QSqlQuery query = makeQuery(connection.get(), true);
        EXPECT_THAT(db::qExecCmd(query, QString::fromUtf8(statement), __FILE__, __LINE__), IsOk());
        QList<QVariantList> result;
        while (query.next()) {
            result.emplaceBack();
            for (int i = 0; i < query.record().count(); ++i) {
                result.last().append(query.value(i));
            }
        }
        return result;
    }

    const QString kSourcePath = QStringLiteral("/data/run.1.raw");

private:
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(FeatureFinderDaoV2Test, WritesTheValuesOfTheStrongestMemberOfEachMaster)
{
    ChargeFeature first = featureOf(1000.123456789, 1236.5, 500, 3);
    first.startD1 = 1234.5678;
    first.endD1 = 1240.0;
    first.startD2 = 12.34567891;
    first.endD2 = 14.2;
    first.apexD2 = 13.0;
    first.averagineScore = 0.1 + 0.2;
    first.isotopeCount = 5;
    ChargeFeature weaker = first;
    weaker.charge = 2;
    weaker.apexIntensity = 400;
    ASSERT_THAT(write({masterOf({first, weaker}), MasterFeature()}), IsOk());
    const auto masters =
        rows("SELECT Id, d1Range, apexRetentionTime, d2Range, apexFrame, mwMonoIsotopicMass, "
             "apexAveragineCorrelation, apexIntensity, charges, apexIsotopeCount FROM Features");
    ASSERT_EQ(masters.size(), 2);
    const QVariantList expected{1LL,
                                QStringLiteral("1234.57;1240"),
                                1236.5,
                                QStringLiteral("12.3457;14.2"),
                                13LL,
                                1000.123456789,
                                0.1 + 0.2,
                                500.0,
                                QStringLiteral("2;3"),
                                5LL};
    EXPECT_EQ(masters[0], expected);
    EXPECT_EQ(masters[1][5].toDouble(), -1.0) << "a master without members";
}

TEST_F(FeatureFinderDaoV2Test, KeepsEveryChargeFeatureAtFullPrecision)
{
    std::mt19937 random(7);
    QList<MasterFeature> masters;
    for (int i = 0; i < 20; ++i) {
        masters.append(masterOf({randomFeature(random), randomFeature(random)}));
    }
    ASSERT_THAT(write(masters), IsOk());
    const auto written = rows("SELECT * FROM ChargeFeatures ORDER BY Id");
    ASSERT_EQ(written.size(), 40);
    for (qsizetype i = 0; i < written.size(); ++i) {
        const ChargeFeature f = masters[i / 2].chargeFeatures()[i % 2];
        const QVariantList expected = {i + 1LL,
                                       i / 2 + 1LL,
                                       f.mzApexOfCluster,
                                       f.monoIsotopicMass,
                                       f.apexIntensity,
                                       f.averagineScore,
                                       f.startD1,
                                       f.endD1,
                                       f.apexD1,
                                       f.startD2,
                                       f.endD2,
                                       f.apexD2,
                                       f.isotopeCount,
                                       f.charge,
                                       f.apexIndex,
                                       f.monoOffset};
        ASSERT_EQ(written[i].size(), expected.size());
        for (qsizetype column = 0; column < expected.size(); ++column) {
            ASSERT_EQ(written[i][column].toDouble(), expected[column].toDouble()) << column;
        }
    }
}

TEST_F(FeatureFinderDaoV2Test, ReplacesAnOldFileEvenWhileItIsRead)
{
    ASSERT_THAT(write({masterOf({featureOf(1.0, 1.0, 1)}), MasterFeature()}), IsOk());
    {
        const db::Connection reader = valueOf(db::openLocalSqliteDb(
            ftrsPath(), db::OpenPolicy::ExistingOnly, QStringLiteral("another reader")));
        QSqlQuery query = makeQuery(reader.get(), true);
        ASSERT_THAT(
            db::qExecCmd(query, QStringLiteral("SELECT Id FROM Features"), __FILE__, __LINE__),
            IsOk());
        ASSERT_TRUE(query.next());
        EXPECT_THAT(write({masterOf({featureOf(1.0, 2.0, 1)})}), IsOk());
        EXPECT_TRUE(query.next()); // still the old one
    }
    EXPECT_EQ(rows("SELECT apexRetentionTime FROM Features"), (QList<QVariantList>{{2.0}}));
}

TEST_F(FeatureFinderDaoV2Test, KeepsTheRowsWrittenBeforeAFailure)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Error failure = write({masterOf({featureOf(1.0, 1.0, 5), featureOf(nan, 1.0, 1)}),
                                 masterOf({featureOf(2.0, 2.0, 2)})});
    EXPECT_THAT(failure, HasError(kError));
    EXPECT_EQ(rows("SELECT * FROM Features").size(), 1);
    EXPECT_EQ(rows("SELECT * FROM ChargeFeatures").size(), 1);
}

} // namespace zel::test
