#include "tools/zel/match/FeatureFile.h"

#include "common/stable/SqlQuery.h"
#include "common/stable/SqliteConnection.h"
#include "feature_finder/records/ChargeFeatureList.h"
#include "tools/io/InputFile.h"
#include "tools/io/TsvTable.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <array>
#include <cmath>
#include <limits>

namespace zel::tool {

namespace {

/// A real field, and the columns that hold it; null where there is none.
struct RealColumn
{
    double ChargeFeature::*field;
    const char* inStore;
    const char* inTable;
};

struct WholeColumn
{
    int ChargeFeature::*field;
    const char* inStore;
    const char* inTable;
};

constexpr std::array kRealColumns = {
    RealColumn{&ChargeFeature::monoIsotopicMass, "monoIsotopicMass", "mono_mass"},
    RealColumn{&ChargeFeature::mzApexOfCluster, "mz", "mz"},
    RealColumn{&ChargeFeature::averagineScore, "averagineScore", "averagine_score"},
    RealColumn{&ChargeFeature::startD1, "startD1", "rt_start"},
    RealColumn{&ChargeFeature::endD1, "endD1", "rt_end"},
    RealColumn{&ChargeFeature::apexD1, "apexD1", "rt_apex"},
};
constexpr std::array kStoreOnlyColumns = {
    RealColumn{&ChargeFeature::startD2, "startD2", nullptr},
    RealColumn{&ChargeFeature::endD2, "endD2", nullptr},
    RealColumn{&ChargeFeature::apexD2, "apexD2", nullptr},
};
constexpr std::array kWholeColumns = {
    WholeColumn{&ChargeFeature::apexIntensity, "intensity", "intensity"},
    WholeColumn{&ChargeFeature::charge, "charge", "charge"},
    WholeColumn{&ChargeFeature::isotopeCount, "isotopeCount", "isotope_count"},
};

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

bool isWhole(double number)
{
    return number == std::trunc(number) && std::abs(number) <= std::numeric_limits<int>::max();
}

/// Reads the cells of one row of the store, in the order of `statement`.
class StoreRow
{
public:
    StoreRow(const QSqlQuery& query, const QString& path)
        : m_query(query)
        , m_path(path)
    {}

    static QString statement()
    {
        QStringList columns;
        for (const RealColumn& column : kRealColumns) {
            columns.append(latin1(column.inStore));
        }
        for (const RealColumn& column : kStoreOnlyColumns) {
            columns.append(latin1(column.inStore));
        }
        for (const WholeColumn& column : kWholeColumns) {
            columns.append(latin1(column.inStore));
        }
        return QStringLiteral("SELECT %1, Id FROM ChargeFeatures ORDER BY Id")
            .arg(columns.join(QStringLiteral(", ")));
    }

    Result<ChargeFeature> feature()
    {
        ChargeFeature feature;
        for (const RealColumn& column : kRealColumns) {
            ZEL_ASSIGN_OR_RETURN(feature.*column.field, number(column.inStore));
        }
        for (const RealColumn& column : kStoreOnlyColumns) {
            if (m_query.isNull(m_index)) { // a run without mobility
                ++m_index;
                continue;
            }
            ZEL_ASSIGN_OR_RETURN(feature.*column.field, number(column.inStore));
        }
        for (const WholeColumn& column : kWholeColumns) {
            ZEL_ASSIGN_OR_RETURN(const double value, number(column.inStore));
            if (!isWhole(value)) {
                return fault(column.inStore);
            }
            feature.*column.field = static_cast<int>(value);
        }
        return feature;
    }

private:
    Result<double> number(const char* column)
    {
        bool isNumber = false;
        const double value = m_query.value(m_index++).toDouble(&isNumber);
        if (!isNumber || !std::isfinite(value)) {
            return fault(column);
        }
        return value;
    }

    Error fault(const char* column) const
    {
        return {kFileFormatError,
                QStringLiteral("%1: %2 of charge feature %3 is not the number that it should be")
                    .arg(m_path, latin1(column), m_query.value(QStringLiteral("Id")).toString())};
    }

    const QSqlQuery& m_query;
    const QString& m_path;
    int m_index = 0;
};

Result<QList<ChargeFeature>> readStore(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const db::Connection connection,
                         db::openLocalSqliteDb(path,
                                               db::OpenPolicy::ExistingOnly,
                                               QStringLiteral("zel_feature_file")));
    QSqlQuery query = makeQuery(connection.get(), true);
    if (db::qExecCmd(query, StoreRow::statement(), __FILE__, __LINE__).hasError()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 is no store of features: its table ChargeFeatures "
                                        "could not be read")
                             .arg(path));
    }
    QList<ChargeFeature> features;
    while (query.next()) {
        ZEL_ASSIGN_OR_RETURN(const ChargeFeature feature, StoreRow(query, path).feature());
        features.append(feature);
    }
    if (query.lastError().isValid()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 is damaged: %2 charge features could be read")
                             .arg(path)
                             .arg(features.size()));
    }
    return features;
}

Result<QList<ChargeFeature>> readJson(const QString& path, const QByteArray& text)
{
    ChargeFeatureList features;
    const Error e = features.deserialize(QString::fromUtf8(text));
    if (e.hasError()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         e.equals(kBadParameterError)
                             ? QStringLiteral("%1 is no JSON object of features").arg(path)
                             : QStringLiteral("%1, feature %2: %3")
                                   .arg(path, QString::number(features.size() + 1), e.message()));
    }
    return features.chargeFeatures();
}

Result<ChargeFeature> featureOf(const io::TsvTable& table, int row)
{
    ChargeFeature feature;
    ZEL_ASSIGN_OR_RETURN(feature.monoIsotopicMass, table.number(row, QStringLiteral("mono_mass")));
    for (const RealColumn& column : kRealColumns) {
        ZEL_ASSIGN_OR_RETURN(const auto value, table.optionalNumber(row, latin1(column.inTable)));
        feature.*column.field = value.value_or(feature.*column.field);
    }
    for (const WholeColumn& column : kWholeColumns) {
        const QString name = latin1(column.inTable);
        ZEL_ASSIGN_OR_RETURN(const auto value, table.optionalNumber(row, name));
        if (value && !isWhole(*value)) {
            ZEL_RETURN_ERROR(
                table.rowError(row, QStringLiteral("column %1 takes whole numbers").arg(name)));
        }
        feature.*column.field = static_cast<int>(value.value_or(feature.*column.field));
    }
    return feature;
}

Result<QList<ChargeFeature>> readTable(io::InputFile& input)
{
    ZEL_ASSIGN_OR_RETURN(const io::TsvTable table, io::TsvTable::read(input));
    QList<ChargeFeature> features;
    if (!table.hasColumn(QStringLiteral("mono_mass"))) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 has no column mono_mass, and is neither a .ftrs store "
                                        "nor JSON")
                             .arg(input.path()));
    }
    for (int row = 0; row < table.rowCount(); ++row) {
        ZEL_ASSIGN_OR_RETURN(const ChargeFeature feature, featureOf(table, row));
        features.append(feature);
    }
    return features;
}

} // namespace

Result<QList<ChargeFeature>> readChargeFeatures(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const auto input, io::InputFile::open(path));
    if (input->head().startsWith("SQLite format 3")) {
        return readStore(path);
    }
    const QByteArray start = input->head().trimmed();
    if (start.startsWith('{') || start.startsWith('[')) {
        ZEL_ASSIGN_OR_RETURN(const QByteArray text, input->readText());
        return readJson(path, text);
    }
    return readTable(*input);
}

} // namespace zel::tool
