#include "feature_finder/dao/FeatureFinderDaoV2.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/stable/Logging.h"
#include "common/stable/SqlQuery.h"
#include "common/stable/SqliteConnection.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <span>

namespace zel {

namespace {

struct Column
{
    const char* name;
    const char* declaration;
};

struct Table
{
    const char* name;
    int indent;                      ///< blanks before each line of its CREATE statement
    std::span<const Column> columns; ///< without the Id
    const char* insertStatement;     ///< %1 the name of the table, %2 and on those of the columns
};

constexpr Column kFeaturesColumns[] = {
    {"d1Range", "TEXT NOT NULL"},
    {"apexRetentionTime", "REAL NOT NULL"},
    {"d2Range", "TEXT"},
    {"apexFrame", "INT"},
    {"mwMonoIsotopicMass", "REAL NOT NULL"},
    {"apexAveragineCorrelation", "REAL NOT NULL"},
    {"apexIntensity", "REAL NOT NULL"},
    {"charges", "INT NOT NULL"},
    {"apexIsotopeCount", "INT NOT NULL"},
};

constexpr Column kChargeFeaturesColumns[] = {
    {"feature", "INT NOT NULL"},
    {"mz", "REAL NOT NULL"},
    {"monoIsotopicMass", "REAL NOT NULL"},
    {"intensity", "INT NOT NULL"},
    {"averagineScore", "REAL NOT NULL"},
    {"startD1", "REAL NOT NULL"},
    {"endD1", "REAL NOT NULL"},
    {"apexD1", "REAL NOT NULL"},
    {"startD2", "REAL"},
    {"endD2", "REAL"},
    {"apexD2", "REAL"},
    {"isotopeCount", "INT NOT NULL"},
    {"charge", "INT NOT NULL"},
    {"apexIndex", "INT NOT NULL"},
    {"monoOffset", "INT NOT NULL"},
};

// The texts of the statements end up in the file and in logs of the driver; their line breaks are
// those of the format.
constexpr Table kFeatures = {
    "Features",
    54,
    kFeaturesColumns,
    "INSERT INTO %1 (%2, %3, %4, %5, %6, %7, %8, %9, %10) VALUES(:d1Range,\n"
    "                         :apexRetentionTime, :d2Range, :apexFrame, :mwMonoIsotopicMass,\n"
    "                         :apexAveragineCorrelation, :apexIntensity, :charges, "
    ":apexIsotopeCount)",
};

constexpr Table kChargeFeatures = {
    "ChargeFeatures",
    59,
    kChargeFeaturesColumns,
    "INSERT INTO %1 (%2, %3, %4, %5, %6, %7, %8, %9, %10, %11, %12, %13, %14, %15, %16) "
    "VALUES(:feature, :mz,\n"
    "                         :monoIsotopicMass, :intensity, :averagineScore, :startD1,\n"
    "                         :endD1, :apexD1, :startD2, :endD2, :apexD2, :isotopeCount\n"
    "                        , :charge, :apexIndex, :monoOffset)",
};

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

QString createStatement(const Table& table)
{
    const QString lineStart = QLatin1Char('\n') + QString(table.indent, QLatin1Char(' '));
    QStringList columns = {QStringLiteral("Id INTEGER PRIMARY KEY NOT NULL")};
    for (const Column& column : table.columns) {
        columns.append(latin1(column.name) + QLatin1Char(' ') + latin1(column.declaration));
    }
    return QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (").arg(latin1(table.name)) + lineStart +
           columns.join(QLatin1Char(',') + lineStart) + lineStart + QLatin1Char(')');
}

QString insertStatement(const Table& table)
{
    QString statement = latin1(table.insertStatement).arg(latin1(table.name));
    for (const Column& column : table.columns) {
        statement = statement.arg(latin1(column.name));
    }
    return statement;
}

Error checkIsOpen(const QSqlDatabase* database)
{
    return ErrorUtils::equal<bool>(
        database->isOpen(), true, Error(kError, "The feature database is not open"));
}

/// Rows are committed one by one. Without these each commit would wait for the disk, and lock and
/// unlock the file.
Error setPragmas(QSqlQuery& query)
{
    Error e;
    for (const char* pragma : {"PRAGMA locking_mode = EXCLUSIVE",
                               "PRAGMA journal_mode = MEMORY",
                               "PRAGMA synchronous = OFF"}) {
        ZEL_RETURN_IF_ERROR(db::qExecCmd(query, latin1(pragma), __FILE__, __LINE__));
    }
    return e;
}

QString rangeText(const Interval<double>& range)
{
    return QString::number(range.start, 'g', 6) + QLatin1Char(';') +
           QString::number(range.end, 'g', 6);
}

/// Empty, but not null, for a master without members: a null text would be stored as NULL.
QString chargesText(const QList<int>& charges)
{
    QString text = QLatin1String("");
    for (const int charge : charges) {
        text += (text.isEmpty() ? QString() : QStringLiteral(";")) + QString::number(charge);
    }
    return text;
}

void bindMaster(QSqlQuery& query, const MasterFeature& master)
{
    query.bindValue(QStringLiteral(":d1Range"), rangeText(master.d1Range()));
    query.bindValue(QStringLiteral(":apexRetentionTime"), master.apexD1());
    query.bindValue(QStringLiteral(":d2Range"), rangeText(master.d2Range()));
    query.bindValue(QStringLiteral(":apexFrame"), master.apexD2());
    query.bindValue(QStringLiteral(":mwMonoIsotopicMass"), master.monoIsotopicMass());
    query.bindValue(QStringLiteral(":apexAveragineCorrelation"), master.apexAveragine());
    query.bindValue(QStringLiteral(":apexIntensity"), master.apexIntensity());
    query.bindValue(QStringLiteral(":charges"), chargesText(master.sortedCharges()));
    query.bindValue(QStringLiteral(":apexIsotopeCount"), master.apexIsotopeCount());
}

void bindChargeFeature(QSqlQuery& query, const ChargeFeature& charge, int feature)
{
    query.bindValue(QStringLiteral(":feature"), feature);
    query.bindValue(QStringLiteral(":mz"), charge.mzApexOfCluster);
    query.bindValue(QStringLiteral(":monoIsotopicMass"), charge.monoIsotopicMass);
    query.bindValue(QStringLiteral(":intensity"), charge.apexIntensity);
    query.bindValue(QStringLiteral(":averagineScore"), charge.averagineScore);
    query.bindValue(QStringLiteral(":startD1"), charge.startD1);
    query.bindValue(QStringLiteral(":endD1"), charge.endD1);
    query.bindValue(QStringLiteral(":apexD1"), charge.apexD1);
    query.bindValue(QStringLiteral(":startD2"), charge.startD2);
    query.bindValue(QStringLiteral(":endD2"), charge.endD2);
    query.bindValue(QStringLiteral(":apexD2"), charge.apexD2);
    query.bindValue(QStringLiteral(":isotopeCount"), charge.isotopeCount);
    query.bindValue(QStringLiteral(":charge"), charge.charge);
    query.bindValue(QStringLiteral(":apexIndex"), charge.apexIndex);
    query.bindValue(QStringLiteral(":monoOffset"), charge.monoOffset);
}

} // namespace

Error FeatureFinderDaoV2::createFtrs(const QString& msFilePath,
                                     const QString& outputDir,
                                     const QList<MasterFeature>& masters)
{
    Error e;
    ZEL_RETURN_IF_ERROR(setDatabase(msFilePath, outputDir));
    ZEL_RETURN_IF_ERROR(removeFtrsFileIfExist(m_ftrsOutput));
    ZEL_ASSIGN_OR_RETURN(
        const db::Connection connection,
        db::openLocalSqliteDb(m_ftrsOutput, db::OpenPolicy::CreateIfMissing, m_dbconnectionName));
    e = createDatabaseSchema(connection.get());
    if (e.hasError()) {
        qCCritical(algoLog) << "Failed to create schema";
    }
    ZEL_RETURN_IF_ERROR(e);
    e = insertFeatures(connection.get(), masters);
    if (e.hasError()) {
        qCCritical(algoLog) << "Failed to populate FTRS file with chargeFeatures/masterFeatures";
    }
    ZEL_RETURN_IF_ERROR(e);
    return e;
}

Error FeatureFinderDaoV2::setDatabase(const QString& msFilePath, const QString& outputDir)
{
    // Without a folder or a name the file would land somewhere else than where it is looked for.
    const QString name = QFileInfo(msFilePath).completeBaseName();
    m_ftrsOutput = name.isEmpty() || outputDir.isEmpty()
                       ? QString()
                       : outputDir + QLatin1Char('/') + QStringLiteral("%1.ftrs").arg(name);
    m_dbconnectionName = m_ftrsOutput.isEmpty()
                             ? QString()
                             : QStringLiteral("FeatureFinder_ftrs_cache_%1")
                                   .arg(QFileInfo(m_ftrsOutput).completeBaseName());
    if (m_ftrsOutput.isEmpty() || m_dbconnectionName.isEmpty()) {
        qCWarning(algoLog) << "ftrs output path or connection name is empty!";
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("No feature file can be named after \"%1\" in folder \"%2\"")
                .arg(msFilePath, outputDir));
    }
    m_databaseSet = true;
    qCDebug(algoLog) << "ftrsOutputPath is:" << m_ftrsOutput;
    qCDebug(algoLog) << "m_connectionName is:" << m_dbconnectionName;
    return kNoError;
}

Error FeatureFinderDaoV2::removeFtrsFileIfExist(const QString& path)
{
    if (QFile::exists(path)) {
        qCWarning(algoLog) << "Ftrs file already exists! Removing" << path;
        if (!QFile::remove(path)) {
            qCWarning(algoLog) << "Failed to remove Ftrs file!";
            ZEL_RETURN_ERROR(kError,
                             QStringLiteral("Cannot remove the old feature file %1").arg(path));
        }
    } else {
        qCDebug(algoLog) << "No existing ftrs file found";
    }
    qCDebug(algoLog) << "Saving features to:" << path;
    return kNoError;
}

Error FeatureFinderDaoV2::createDatabaseSchema(QSqlDatabase* database)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkIsOpen(database));
    QSqlQuery query = makeQuery(database, true);
    ZEL_RETURN_IF_ERROR(setPragmas(query));
    for (const Table& table : {kFeatures, kChargeFeatures}) {
        ZEL_RETURN_IF_ERROR(db::qExecCmd(query, createStatement(table), __FILE__, __LINE__));
        ZEL_RETURN_IF_ERROR(db::qExecCmd(
            query, QStringLiteral("DELETE FROM %1").arg(latin1(table.name)), __FILE__, __LINE__));
    }
    return e;
}

Error FeatureFinderDaoV2::insertFeatures(QSqlDatabase* database,
                                         const QList<MasterFeature>& masters)
{
    static const QString statement = insertStatement(kFeatures);
    Error e;
    ZEL_RETURN_IF_ERROR(checkIsOpen(database));
    if (masters.isEmpty()) {
        return e;
    }
    QSqlQuery query = makeQuery(database, true);
    ZEL_RETURN_IF_ERROR(db::qPrepare(query, statement, __FILE__, __LINE__));
    int number = 0;
    for (const MasterFeature& master : masters) {
        bindMaster(query, master);
        ZEL_RETURN_IF_ERROR(db::qExec(query, __FILE__, __LINE__));
        ++number;
        ZEL_RETURN_IF_ERROR(insertChargeFeatures(database, master.chargeFeatures(), number));
    }
    return e;
}

Error FeatureFinderDaoV2::insertChargeFeatures(QSqlDatabase* database,
                                               const QList<ChargeFeature>& features,
                                               const int& feature)
{
    static const QString statement = insertStatement(kChargeFeatures);
    Error e;
    ZEL_RETURN_IF_ERROR(checkIsOpen(database));
    if (features.isEmpty()) {
        return e;
    }
    QSqlQuery query = makeQuery(database, true);
    ZEL_RETURN_IF_ERROR(db::qPrepare(query, statement, __FILE__, __LINE__));
    for (const ChargeFeature& charge : features) {
        bindChargeFeature(query, charge, feature);
        ZEL_RETURN_IF_ERROR(db::qExec(query, __FILE__, __LINE__));
    }
    return e;
}

} // namespace zel
