#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

class QSqlDatabase;
class QSqlQuery;
class QString;

// Running SQL through Qt's module of that name, with failures as values. Qt6::Sql stays a private
// dependency of the library: whoever calls these includes <QSqlQuery> and links it himself.

namespace zel {

/// A query on an open database. Like every query it must be gone before its connection is.
/// \param database     null gives a query on which every statement fails
/// \param forwardOnly  results are read once, from front to back, and are not cached
ZEL_EXPORT QSqlQuery makeQuery(const QSqlDatabase* database, bool forwardOnly);

namespace db {

/// Prepares a statement. A failure is a kError with the driver's text and the statement, stamped
/// with the place of the call. \param file, line  the place of the call
ZEL_EXPORT Error qPrepare(QSqlQuery& query, const QString& statement, const char* file, int line);

/// Runs a statement; failures as of `qPrepare`.
ZEL_EXPORT Error qExecCmd(QSqlQuery& query, const QString& statement, const char* file, int line);

/// Runs the prepared statement with the values bound; failures as of `qPrepare`.
ZEL_EXPORT Error qExec(QSqlQuery& query, const char* file, int line);

} // namespace db

} // namespace zel
