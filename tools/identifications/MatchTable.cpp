#include "common/stable/PhysicalConstants.h"
#include "tools/identifications/PeptideText.h"
#include "tools/identifications/SpectrumMatchReaders.h"
#include "tools/io/TsvTable.h"

#include <cmath>

namespace zel::identifications {

using io::TsvTable;
using Reason = MatchReport::Reason;

namespace {

constexpr int kMaxCharge = 100;

const QString kRun = QStringLiteral("run");
const QString kSequence = QStringLiteral("sequence");
const QString kModifications = QStringLiteral("modifications");
const QString kCharge = QStringLiteral("charge");
const QString kMz = QStringLiteral("mz");
const QString kMass = QStringLiteral("mass");
const QString kRt = QStringLiteral("rt");
const QString kScore = QStringLiteral("score");

Error checkColumns(const TsvTable& table, const QString& path, const QString& scoreName)
{
    QStringList needed = {kSequence, kCharge, kRt};
    if (!scoreName.isEmpty()) {
        needed.append(scoreName);
    }
    for (const QString& column : needed) {
        if (!table.hasColumn(column)) {
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("%1: a table of matches needs the column %2; it has %3")
                                 .arg(path, column, table.columnNames().join(QLatin1String(", "))));
        }
    }
    return kNoError;
}

/// Reads row after row.
class RowReader
{
public:
    RowReader(const TsvTable& table, const QString& scoreColumn)
        : m_table(table)
        , m_scoreColumn(scoreColumn)
    {}

    /// \param reason  receives what a failure is about
    Result<SpectrumMatch> read(int row, Reason* reason) const
    {
        Error e;
        SpectrumMatch match;
        match.run = m_table.text(row, kRun);
        match.place = m_table.place(row);
        match.sequence = m_table.text(row, kSequence);
        *reason = Reason::Sequence;
        ZEL_RETURN_IF_ERROR(inRow(row, checkSequence(match.sequence)));
        *reason = Reason::Modifications;
        match.modifications = m_table.text(row, kModifications);
        const Result<double> shiftsDa = sumOfMassShifts(match.modifications);
        ZEL_RETURN_IF_ERROR(inRow(row, shiftsDa.error()));
        *reason = Reason::Charge;
        ZEL_ASSIGN_OR_RETURN(match.charge, charge(row));
        *reason = Reason::Mass;
        ZEL_ASSIGN_OR_RETURN(match.mz, mz(row, match, shiftsDa.value()));
        *reason = Reason::Time;
        ZEL_ASSIGN_OR_RETURN(match.rtMinutes, m_table.number(row, kRt));
        *reason = Reason::Score;
        ZEL_ASSIGN_OR_RETURN(const auto score, m_table.optionalNumber(row, m_scoreColumn));
        match.score = scoreOf(m_scoreColumn, score.value_or(0.0));
        return match;
    }

private:
    /// The same failure with file and line.
    Error inRow(int row, const Error& error) const
    {
        return error.hasError() ? m_table.rowError(row, error.message()) : error;
    }

    Result<int> charge(int row) const
    {
        ZEL_ASSIGN_OR_RETURN(const double value, m_table.number(row, kCharge));
        if (value != std::trunc(value) || value < 1.0 || value > kMaxCharge) {
            ZEL_RETURN_ERROR(
                m_table.rowError(row,
                                 QStringLiteral("expected a charge from 1 to %1, but found \"%2\"")
                                     .arg(kMaxCharge)
                                     .arg(m_table.text(row, kCharge))));
        }
        return static_cast<int>(value);
    }

    /// Of the columns for it, else of the neutral mass, else calculated.
    Result<double> mz(int row, const SpectrumMatch& match, double shiftsDa) const
    {
        ZEL_ASSIGN_OR_RETURN(const auto mz, m_table.optionalNumber(row, kMz));
        ZEL_ASSIGN_OR_RETURN(const auto mass, m_table.optionalNumber(row, kMass));
        if ((mz && *mz <= 0.0) || (mass && *mass <= 0.0)) {
            ZEL_RETURN_ERROR(m_table.rowError(row, QStringLiteral("m/z or mass is not positive")));
        }
        if (mz) {
            return *mz;
        }
        if (mass) {
            return ionMz(*mass, match.charge, 0);
        }
        const Result<double> calculated = peptideMass(match.sequence, shiftsDa);
        if (!calculated.isOk()) {
            ZEL_RETURN_ERROR(inRow(row, calculated.error()));
        }
        return ionMz(calculated.value(), match.charge, 0);
    }

    const TsvTable& m_table;
    QString m_scoreColumn;
};

} // namespace

Result<SpectrumMatchFile> readMatchTable(io::InputFile& input,
                                         const QString& scoreName,
                                         MatchReport* report)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const TsvTable table, TsvTable::read(input));
    ZEL_RETURN_IF_ERROR(checkColumns(table, input.path(), scoreName));
    const QString scoreColumn = scoreName.isEmpty() ? kScore : scoreName;
    const QStringList known = {
        kRun, kSequence, kModifications, kCharge, kMz, kMass, kRt, scoreColumn};
    SpectrumMatchFile file;
    for (const QString& column : table.columnNames()) {
        if (!known.contains(column)) {
            file.unknownColumns.append(column);
        }
    }
    const RowReader reader(table, scoreColumn);
    for (int row = 0; row < table.rowCount(); ++row) {
        Reason reason = Reason::Sequence;
        Result<SpectrumMatch> match = reader.read(row, &reason);
        if (match.isOk()) {
            file.matches.append(std::move(match.value()));
        } else {
            report->leaveOut(reason, match.error().message());
        }
    }
    return file;
}

} // namespace zel::identifications
