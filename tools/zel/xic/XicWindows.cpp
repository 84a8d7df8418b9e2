#include "tools/zel/xic/XicWindows.h"

#include "common/stable/SharedNumbers.h"
#include "tools/io/TsvTable.h"

#include <QHash>

#include <limits>

namespace zel::tool {

using io::TsvTable;

namespace {

using MzSet = math::ClosedMultiInterval<double, 10>;
using TimeSet = math::ClosedMultiInterval<double, 6>;

Result<MzSet> readMzSet(const TsvTable& table, int row)
{
    if (table.hasColumn(QStringLiteral("mz_start"))) {
        ZEL_ASSIGN_OR_RETURN(const double start, table.number(row, QStringLiteral("mz_start")));
        ZEL_ASSIGN_OR_RETURN(const double end, table.number(row, QStringLiteral("mz_end")));
        if (start < 0.0 || end < start) {
            ZEL_RETURN_ERROR(table.rowError(
                row, QStringLiteral("mz_start and mz_end must be ascending and not negative")));
        }
        return MzSet(start, end);
    }
    ZEL_ASSIGN_OR_RETURN(const double mz, table.number(row, QStringLiteral("mz")));
    ZEL_ASSIGN_OR_RETURN(const double ppm, table.number(row, QStringLiteral("ppm")));
    if (mz <= 0.0 || ppm < 0.0) {
        ZEL_RETURN_ERROR(
            table.rowError(row, QStringLiteral("mz must be positive and ppm not negative")));
    }
    return mzWindow(mz, ppm);
}

Result<TimeSet> readTimeSet(const TsvTable& table, int row)
{
    ZEL_ASSIGN_OR_RETURN(const auto start, table.optionalNumber(row, QStringLiteral("rt_start")));
    ZEL_ASSIGN_OR_RETURN(const auto end, table.optionalNumber(row, QStringLiteral("rt_end")));
    constexpr double open = std::numeric_limits<double>::max();
    const TimeSet time(start.value_or(-open), end.value_or(open));
    if (time.isEmpty()) {
        ZEL_RETURN_ERROR(table.rowError(row, QStringLiteral("rt_start lies after rt_end")));
    }
    return time;
}

Error checkColumns(const TsvTable& table, const QString& path)
{
    const auto hasAll = [&table](const QStringList& columns) {
        return std::all_of(columns.begin(), columns.end(), [&table](const QString& column) {
            return table.hasColumn(column);
        });
    };
    if (!hasAll({QStringLiteral("name")}) ||
        (!hasAll({QStringLiteral("mz"), QStringLiteral("ppm")}) &&
         !hasAll({QStringLiteral("mz_start"), QStringLiteral("mz_end")}))) {
        ZEL_RETURN_ERROR(
            kFileFormatError,
            QStringLiteral(
                "%1: the header must name the columns name, and mz and ppm or mz_start and mz_end")
                .arg(path));
    }
    return kNoError;
}

} // namespace

MzSet mzWindow(double mz, double ppm)
{
    const double halfWidth = mz * ppm * kPartsPerMillion;
    return {mz - halfWidth, mz + halfWidth};
}

Result<QList<XicTarget>> readXicWindows(const QString& path)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const TsvTable table, TsvTable::read(path));
    ZEL_RETURN_IF_ERROR(checkColumns(table, path));

    struct Place
    {
        qsizetype index;
        bool isGroup;
    };
    QHash<QString, Place> placeByName;
    QList<XicTarget> targets;
    for (int row = 0; row < table.rowCount(); ++row) {
        ZEL_ASSIGN_OR_RETURN(const MzSet mz, readMzSet(table, row));
        ZEL_ASSIGN_OR_RETURN(const TimeSet time, readTimeSet(table, row));
        const QString group = table.text(row, QStringLiteral("group"));
        const bool isGroup = !group.isEmpty();
        const QString name = isGroup ? group : table.text(row, QStringLiteral("name"));
        if (name.isEmpty()) {
            ZEL_RETURN_ERROR(table.rowError(row, QStringLiteral("the name is empty")));
        }
        const auto known = placeByName.constFind(name);
        if (known == placeByName.cend()) {
            placeByName.insert(name, {targets.size(), isGroup});
            targets.append({name, {XicDimensions(mz, time)}});
        } else if (known->isGroup && isGroup) {
            targets[known->index].members.append(XicDimensions(mz, time));
        } else {
            ZEL_RETURN_ERROR(
                table.rowError(row, QStringLiteral("the name \"%1\" is already used").arg(name)));
        }
    }
    return targets;
}

} // namespace zel::tool
