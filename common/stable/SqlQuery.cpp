#include "common/stable/SqlQuery.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>

namespace zel {

namespace {

/// \param action  what was tried, as a signature for the frame
Error outcome(bool succeeded,
              const QSqlQuery& query,
              const QString& statement,
              const char* action,
              const char* file,
              int line)
{
    if (succeeded) {
        return kNoError;
    }
    Error failure(kError,
                  QStringLiteral("%1 in the SQL statement: %2")
                      .arg(query.lastError().text().trimmed(), statement));
    failure.ecatch(action, file, line);
    return failure;
}

} // namespace

QSqlQuery makeQuery(const QSqlDatabase* database, bool forwardOnly)
{
    QSqlQuery query(database != nullptr ? *database : QSqlDatabase());
    query.setForwardOnly(forwardOnly);
    return query;
}

namespace db {

Error qPrepare(QSqlQuery& query, const QString& statement, const char* file, int line)
{
    const bool succeeded = query.prepare(statement);
    return outcome(succeeded, query, statement, Q_FUNC_INFO, file, line);
}

Error qExecCmd(QSqlQuery& query, const QString& statement, const char* file, int line)
{
    const bool succeeded = query.exec(statement);
    return outcome(succeeded, query, statement, Q_FUNC_INFO, file, line);
}

Error qExec(QSqlQuery& query, const char* file, int line)
{
    const bool succeeded = query.exec();
    return outcome(succeeded, query, query.lastQuery(), Q_FUNC_INFO, file, line);
}

} // namespace db

} // namespace zel
