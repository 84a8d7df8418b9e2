#include "tools/identifications/PeptideText.h"

#include "chemical_model/Residues.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <optional>

namespace zel::identifications {

namespace {

/// The mass shift of one item; nothing unless it is "label/number". A "%" is refused because the
/// hash of an ion takes "%3" for a field.
std::optional<double> massShift(const QString& item)
{
    const QStringList parts = item.split(QLatin1Char('/'));
    if (parts.size() != 2 || parts[0].trimmed().isEmpty() || parts[0].contains(QLatin1Char('%'))) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double shift = parts[1].toDouble(&isNumber);
    return isNumber && std::isfinite(shift) ? std::optional(shift) : std::nullopt;
}

} // namespace

Result<double> sumOfMassShifts(const QString& modifications)
{
    double sum = 0.0;
    if (modifications.isEmpty()) {
        return sum;
    }
    for (const QString& item : modifications.split(QLatin1Char(';'))) {
        const std::optional<double> shift = massShift(item);
        if (!shift) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("expected modifications as label/mass shift, separated "
                                            "by \";\", but found \"%1\" in \"%2\"")
                                 .arg(item, modifications));
        }
        sum += *shift;
    }
    return sum;
}

Error checkSequence(const QString& sequence)
{
    const bool isFine = !sequence.isEmpty() && std::ranges::all_of(sequence, [](QChar letter) {
        return letter >= u'A' && letter <= u'Z';
    });
    if (!isFine) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("expected a sequence of capital letters, but found \"%1\"")
                             .arg(sequence));
    }
    return kNoError;
}

Result<double> peptideMass(const QString& sequence, double shiftsDa)
{
    for (const QChar letter : sequence) {
        if (chem::residueMass(letter) == 0.0) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("neither m/z nor mass is given, and residue %1 of %2 "
                                            "has no mass of its own")
                                 .arg(letter)
                                 .arg(sequence));
        }
    }
    return chem::peptideMass(sequence) + shiftsDa;
}

QString runName(const QString& path)
{
    static const char* const suffixes[] = {
        ".gz", ".mzML", ".mzXML", ".mzData", ".mgf", ".ms2", ".raw", ".wiff", ".d"};
    const qsizetype folderEnd =
        std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
    QString name = path.sliced(folderEnd + 1);
    for (const char* const suffix : suffixes) {
        const QLatin1StringView ending(suffix);
        if (name.size() > ending.size() && name.endsWith(ending, Qt::CaseInsensitive)) {
            name.chop(ending.size());
        }
    }
    return name;
}

double scoreOf(const QString& name, double value)
{
    static const char* const smallIsGood[] = {
        "expect", "evalue", "pvalue", "qvalue", "fdr", "errorprobability"};
    QString plain = name.toLower();
    for (const char separator : {' ', '_', '-'}) {
        plain.remove(QLatin1Char(separator));
    }
    const bool isError = plain == QLatin1String("pep") ||
                         std::ranges::any_of(smallIsGood, [&plain](const char* part) {
                             return plain.contains(QLatin1StringView(part));
                         });
    return isError ? -value : value;
}

} // namespace zel::identifications
