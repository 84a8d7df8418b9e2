#pragma once

#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <memory>

class QSqlDatabase;
class QString;

namespace zel::db {

/// What to do about a file that is not there.
enum class OpenPolicy {
    ExistingOnly = 0,    ///< fail
    CreateIfMissing = 1, ///< make an empty database
};

/// An open SQLite database; closed, and its Qt connection removed, when this object goes. All
/// queries on it must be gone by then. Used from the thread that opened it.
class ZEL_EXPORT Connection
{
public:
    Connection(Connection&&) noexcept;
    Connection& operator=(Connection&&) noexcept;
    ~Connection();

    /// The database; owned by this object.
    QSqlDatabase* get() const;

private:
    explicit Connection(std::unique_ptr<QSqlDatabase> database);
    friend Result<Connection> openLocalSqliteDb(const QString& path,
                                                OpenPolicy policy,
                                                const QString& connectionName);

    void close();

    std::unique_ptr<QSqlDatabase> m_database;
};

/// Opens an SQLite file under a Qt connection name of its own. Needs a QCoreApplication, as Qt's
/// SQL drivers are plug-ins.
/// \return kError when the name is in use in this process, which keeps its connection;
/// kFileOpenError when the file is missing, cannot be opened, or there is no driver. Whether the
/// content is a database shows at the first statement.
ZEL_EXPORT Result<Connection> openLocalSqliteDb(const QString& path,
                                                OpenPolicy policy,
                                                const QString& connectionName);

} // namespace zel::db
