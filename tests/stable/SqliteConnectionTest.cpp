#include "common/stable/SqliteConnection.h"

#include "common/stable/SqlQuery.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>

namespace zel::test {

namespace {

class SqliteConnectionTest : public ::testing::Test
{
protected:
    QString pathOf(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    static Error run(const db::Connection& connection, const char* statement)
    {
        QSqlQuery query = makeQuery(connection.get(), true);
        return db::qExecCmd(query, QString::fromUtf8(statement), __FILE__, __LINE__);
    }

    const QString kName = QStringLiteral("sqlite connection test");

private:
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(SqliteConnectionTest, RemovesItsConnectionWithoutComplaint)
{
    const LogCapture log;
    {
        db::Connection connection =
            valueOf(db::openLocalSqliteDb(pathOf("a.db"), db::OpenPolicy::CreateIfMissing, kName));
        EXPECT_THAT(run(connection, "CREATE TABLE t (x INT)"), IsOk());
        const db::Connection moved = std::move(connection);
        EXPECT_THAT(run(moved, "INSERT INTO t VALUES (5)"), IsOk());
        EXPECT_TRUE(QSqlDatabase::contains(kName));
    }
    EXPECT_FALSE(QSqlDatabase::contains(kName));
    EXPECT_EQ(log.lines(), QStringList());

    // It is free for another one, which finds what was written.
    const db::Connection again =
        valueOf(db::openLocalSqliteDb(pathOf("a.db"), db::OpenPolicy::ExistingOnly, kName));
    QSqlQuery query = makeQuery(again.get(), true);
    EXPECT_THAT(db::qPrepare(query, QStringLiteral("SELECT x FROM t"), __FILE__, __LINE__), IsOk());
    EXPECT_THAT(db::qExec(query, __FILE__, __LINE__), IsOk());
    ASSERT_TRUE(query.next());
    EXPECT_EQ(query.value(0).toInt(), 5);
}

TEST_F(SqliteConnectionTest, FailsOnWhatCannotBeOpenedOrRun)
{
    using db::OpenPolicy;
    EXPECT_THAT(db::openLocalSqliteDb(pathOf("none.db"), OpenPolicy::ExistingOnly, kName),
                HasError(kFileOpenError));
    EXPECT_FALSE(QFile::exists(pathOf("none.db")));
    EXPECT_THAT(db::openLocalSqliteDb(pathOf("no/folder.db"), OpenPolicy::CreateIfMissing, kName),
                HasError(kFileOpenError));
    EXPECT_FALSE(QSqlDatabase::contains(kName));

    const db::Connection connection =
        valueOf(db::openLocalSqliteDb(pathOf("a.db"), OpenPolicy::CreateIfMissing, kName));
    EXPECT_THAT(run(connection, "CREATE TABEL t (x INT)"), HasError(kError));
    const LogCapture log; // Qt has its own word about this one
    QSqlQuery nowhere = makeQuery(nullptr, true);
    EXPECT_THAT(db::qExecCmd(nowhere, QStringLiteral("SELECT 1"), __FILE__, __LINE__),
                HasError(kError));
}

} // namespace zel::test
