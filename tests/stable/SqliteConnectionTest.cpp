#include "common/stable/SqliteConnection.h"

#include "common/stable/SqlQuery.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::test {

TEST(SqliteConnectionTest, RemovesItsConnectionWithoutComplaint)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.db"));
    const QString name = QStringLiteral("sqlite connection test");
    EXPECT_THAT(db::openLocalSqliteDb(path, db::OpenPolicy::ExistingOnly, name),
                HasError(kFileOpenError));
    EXPECT_FALSE(QFile::exists(path));
    const LogCapture log;
    {
        db::Connection connection =
            valueOf(db::openLocalSqliteDb(path, db::OpenPolicy::CreateIfMissing, name));
        const db::Connection moved = std::move(connection);
        QSqlQuery query = makeQuery(moved.get(), true);
        const auto run = [&query](const char* statement) {
            return db::qExecCmd(query, QString::fromUtf8(statement), __FILE__, __LINE__);
        };
        EXPECT_THAT(run("CREATE TABLE t (x INT)"), IsOk());
        EXPECT_THAT(run("CREATE TABEL t (x INT)"), HasError(kError));
    }
    EXPECT_FALSE(QSqlDatabase::contains(name));
    EXPECT_EQ(log.lines().filter(QStringLiteral("still in use")), QStringList());
    EXPECT_THAT(db::openLocalSqliteDb(path, db::OpenPolicy::ExistingOnly, name), IsOk());
}

} // namespace zel::test
