#include "tools/simulate/Truth.h"

#include "common/stable/NumberText.h"
#include "tools/io/OutputFile.h"

#include <QHash>

#include <algorithm>
#include <functional>
#include <utility>

namespace zel::simulate {

namespace {

constexpr char kHeader[] = "sample\tsequence\tmono_mass\tcharge\tmz\trt_start\trt_apex\trt_end\t"
                           "rt_reference\tmobility_start\tmobility_apex\tmobility_end\t"
                           "apex_intensity\tarea\tisotope_fractions\n";

QByteArray row(const TrueIon& ion)
{
    QByteArrayList fractions;
    for (const double fraction : ion.isotopeFractions) {
        fractions.append(roundTripText(fraction));
    }
    const QByteArrayList columns = {QByteArray::number(ion.sample + 1),
                                    ion.sequence.toUtf8(),
                                    roundTripText(ion.mass),
                                    QByteArray::number(ion.charge),
                                    roundTripText(ion.mz),
                                    roundTripText(ion.rtStart),
                                    roundTripText(ion.rtApex),
                                    roundTripText(ion.rtEnd),
                                    roundTripText(ion.rtReference),
                                    roundTripText(ion.mobilityStart),
                                    roundTripText(ion.mobilityApex),
                                    roundTripText(ion.mobilityEnd),
                                    roundTripText(ion.apexIntensity),
                                    roundTripText(ion.area),
                                    fractions.join(',')};
    return columns.join('\t') + '\n';
}

Error writeTable(const QString& path, const QByteArray& header, const QByteArrayList& rows)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto file, io::OutputFile::open(path));
    *file << header << rows.join();
    ZEL_RETURN_IF_ERROR(file->commit());
    return e;
}

QByteArray windowRow(const TrueIon& ion)
{
    const QByteArrayList columns = {ion.sequence.toUtf8() + '/' + QByteArray::number(ion.charge) +
                                        '+',
                                    roundTripText(ion.mz),
                                    QByteArrayLiteral("10"),
                                    roundTripText(ion.rtStart),
                                    roundTripText(ion.rtEnd)};
    return columns.join('\t') + '\n';
}

QByteArray matchRow(const TrueIon& ion, const QString& run)
{
    const QByteArrayList columns = {run.toUtf8(),
                                    ion.sequence.toUtf8(),
                                    QByteArray::number(ion.charge),
                                    roundTripText(ion.rtApex),
                                    roundTripText(ion.mz)};
    return columns.join('\t') + '\n';
}

/// The ions of all samples as if they were of one: limits over all, the highest intensity; the
/// strongest first.
QList<TrueIon> overAllSamples(const QList<TrueIon>& ions)
{
    QHash<std::pair<QString, int>, qsizetype> places;
    QList<TrueIon> merged;
    for (const TrueIon& ion : ions) {
        const auto key = std::pair(ion.sequence, ion.charge);
        const auto known = places.constFind(key);
        if (known == places.cend()) {
            places.insert(key, merged.size());
            merged.append(ion);
            continue;
        }
        TrueIon& whole = merged[*known];
        whole.rtStart = std::min(whole.rtStart, ion.rtStart);
        whole.rtEnd = std::max(whole.rtEnd, ion.rtEnd);
        whole.apexIntensity = std::max(whole.apexIntensity, ion.apexIntensity);
    }
    std::ranges::stable_sort(merged, std::ranges::greater(), &TrueIon::apexIntensity);
    return merged;
}

} // namespace

Error writeTruth(const QString& path, const QList<TrueIon>& ions)
{
    QByteArrayList rows;
    for (const TrueIon& ion : ions) {
        rows.append(row(ion));
    }
    return writeTable(path, kHeader, rows);
}

Error writeWindows(const QString& path, const QList<TrueIon>& ions)
{
    QByteArrayList rows;
    for (const TrueIon& ion : overAllSamples(ions)) {
        rows.append(windowRow(ion));
    }
    return writeTable(path, "name\tmz\tppm\trt_start\trt_end\n", rows);
}

Error writeMatches(const QString& path, const QList<TrueIon>& ions, const QStringList& runs)
{
    QByteArrayList rows;
    for (const TrueIon& ion : ions) {
        rows.append(matchRow(ion, runs[ion.sample]));
    }
    return writeTable(path, "run\tsequence\tcharge\trt\tmz\n", rows);
}

} // namespace zel::simulate
