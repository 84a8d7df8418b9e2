#include "common/stable/SqliteConnection.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>

#include <mutex>

namespace zel::db {

namespace {

/// Registers a connection of this name; Qt would silently replace one that is in use.
Result<std::unique_ptr<QSqlDatabase>> addConnection(const QString& name)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (QSqlDatabase::contains(name)) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("The database connection name \"%1\" is in use already").arg(name));
    }
    return std::make_unique<QSqlDatabase>(
        QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name));
}

} // namespace

Connection::Connection(std::unique_ptr<QSqlDatabase> database)
    : m_database(std::move(database))
{}

Connection::Connection(Connection&&) noexcept = default;

Connection& Connection::operator=(Connection&& other) noexcept
{
    if (this != &other) {
        close();
        m_database = std::move(other.m_database);
    }
    return *this;
}

Connection::~Connection()
{
    close();
}

QSqlDatabase* Connection::get() const
{
    return m_database.get();
}

void Connection::close()
{
    if (m_database == nullptr) {
        return;
    }
    const QString name = m_database->connectionName();
    m_database->close();
    m_database.reset();
    QSqlDatabase::removeDatabase(name);
}

Result<Connection> openLocalSqliteDb(const QString& path,
                                     OpenPolicy policy,
                                     const QString& connectionName)
{
    if (policy == OpenPolicy::ExistingOnly && !QFileInfo(path).isFile()) {
        ZEL_RETURN_ERROR(kFileOpenError, QStringLiteral("There is no file %1").arg(path));
    }
    ZEL_ASSIGN_OR_RETURN(std::unique_ptr<QSqlDatabase> database, addConnection(connectionName));
    Connection connection(std::move(database));
    connection.get()->setDatabaseName(path);
    if (!connection.get()->open()) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("Could not open the database %1: %2")
                             .arg(path, connection.get()->lastError().text().trimmed()));
    }
    return connection;
}

} // namespace zel::db
