#pragma once

#include "feature_finder/records/MasterFeature.h"

#include <QString>

class QSqlDatabase;

namespace zel {

/// Writes the features of one sample to its `.ftrs` file, an SQLite database with one row for each
/// master feature (table Features) and one for each of its charge features (table ChargeFeatures);
/// docs/file-formats.md lists their columns. The file is made new each time.
///
/// Every row is committed by itself, so that a failure leaves the rows before it. The database runs
/// without waiting for the disk: a crash of the machine may leave a damaged file, which the next
/// run replaces.
///
/// One object serves one thread. Files of different names can be written at the same time; two of
/// the same name cannot, in one process.
class ZEL_EXPORT FeatureFinderDaoV2 : public MasterFeature
{
public:
    /// \param msFilePath  path of the sample's data; only its name is used, without the last suffix
    /// \param outputDir   folder that the file goes to; must be there
    /// \param masters     in the order in which they are to be numbered from 1
    /// \return kError when the file has no name, an old one cannot be removed, or a statement
    /// fails; kFileOpenError when the database cannot be opened
    Error createFtrs(const QString& msFilePath,
                     const QString& outputDir,
                     const QList<MasterFeature>& masters);

    /// Path of the file; set by `createFtrs`.
    QString ftrsOutput() const { return m_ftrsOutput; }
    /// Name of the Qt connection through which it was written; set by `createFtrs`.
    QString dbconnectionName() const { return m_dbconnectionName; }

private:
    Error setDatabase(const QString& msFilePath, const QString& outputDir);
    static Error removeFtrsFileIfExist(const QString& path);
    static Error createDatabaseSchema(QSqlDatabase* database);
    static Error insertFeatures(QSqlDatabase* database, const QList<MasterFeature>& masters);
    static Error insertChargeFeatures(QSqlDatabase* database,
                                      const QList<ChargeFeature>& features,
                                      const int& feature);

    bool m_databaseSet = false;
    QString m_ftrsOutput;
    QString m_dbconnectionName;
};

} // namespace zel
