#include "dia/diamolecule/digestion/Digestion.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zel {

namespace {

constexpr char kDecorationSeparator = '_';

/// The count of a piece that ends at a place which is cut, but is no true cleavage point: it makes
/// the step across that place free.
constexpr qint64 kFreeStep = -1;

/// A rule map that is asked for every residue of every protein: its letters as a table.
class RuleTable
{
public:
    enum Opinion : signed char { None, Denies, Cuts };

    explicit RuleTable(const QMap<QString, bool>& rules)
        : m_rules(rules)
    {
        for (std::size_t letter = 0; letter < m_letters.size(); ++letter) {
            m_letters[letter] = lookUp(QChar(static_cast<char16_t>(letter)));
        }
    }

    Opinion of(QChar residue) const
    {
        const std::size_t letter = residue.unicode();
        return letter < m_letters.size() ? m_letters[letter] : lookUp(residue);
    }

private:
    Opinion lookUp(QChar residue) const
    {
        const auto rule = m_rules.constFind(QString(residue));
        return rule == m_rules.constEnd() ? None : *rule ? Cuts : Denies;
    }

    const QMap<QString, bool>& m_rules;
    std::array<Opinion, 128> m_letters;
};

/// A protein and the rules by which it is cut.
struct Cutter
{
    const QString& sequence;
    RuleTable before;
    RuleTable after;

    /// What the rules say of the place after a position, both residues taken into account.
    std::pair<RuleTable::Opinion, RuleTable::Opinion> opinionsAfter(qsizetype position) const
    {
        return {position + 1 < sequence.size() ? before.of(sequence[position + 1])
                                               : RuleTable::None,
                after.of(sequence[position])};
    }
};

BasicPeptide part(const QString& sequence, qint64 start, qint64 end, qint64 missedCleavages)
{
    return {start, end, sequence.sliced(start, end - start + 1), missedCleavages, sequence.size()};
}

/// The pieces between neighbouring cuts.
QList<BasicPeptide> piecesOf(const Cutter& cutter, int maxLength)
{
    QList<BasicPeptide> pieces;
    const qsizetype size = cutter.sequence.size();
    qsizetype pieceStart = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const auto [before, after] = cutter.opinionsAfter(i);
        if (before != RuleTable::Cuts && after != RuleTable::Cuts) {
            continue;
        }
        if (i - pieceStart + 1 <= maxLength) {
            const bool isDenied = before == RuleTable::Denies || after == RuleTable::Denies;
            pieces.append(part(cutter.sequence, pieceStart, i, isDenied ? kFreeStep : 0));
        }
        pieceStart = i + 1;
    }
    if (pieceStart < size) {
        pieces.append(part(cutter.sequence, pieceStart, size - 1, 0));
    }
    return pieces;
}

/// The peptides of `count` neighbouring pieces each that do not miss too many cleavages.
QList<BasicPeptide> joined(const QString& sequence,
                           const QList<BasicPeptide>& pieces,
                           qsizetype count,
                           int maxMissedCleavages)
{
    QList<BasicPeptide> peptides;
    for (qsizetype first = 0; first + count <= pieces.size(); ++first) {
        qint64 missed = count - 1;
        for (qsizetype i = first; i < first + count; ++i) {
            missed += pieces[i].missedCleavages;
        }
        if (missed <= maxMissedCleavages) {
            peptides.append(
                part(sequence, pieces[first].start, pieces[first + count - 1].end, missed));
        }
    }
    return peptides;
}

/// A peptide of the protein's start without its methionine.
bool losesMethionine(const BasicPeptide& peptide)
{
    return peptide.start == 0 && peptide.sequence.size() >= 2 &&
           peptide.sequence.front() == QLatin1Char('M');
}

BasicPeptide withoutFirst(BasicPeptide peptide)
{
    peptide.start = 1;
    peptide.sequence.remove(0, 1);
    return peptide;
}

void appendClipped(const BasicPeptide& peptide, qint64 proteinLength, QList<BasicPeptide>* clipped)
{
    constexpr qint64 farthestClip = 4; // residues from the end of the protein
    constexpr qint64 nearestClip = 2;
    if (peptide.end >= proteinLength) {
        return;
    }
    for (qint64 point = proteinLength - farthestClip; point <= proteinLength - nearestClip;
         ++point) {
        const qint64 lost = peptide.end - point;
        if (lost > 0 && lost < peptide.sequence.size()) {
            BasicPeptide shorter = peptide;
            shorter.end = point;
            shorter.sequence.chop(lost);
            clipped->append(shorter);
        }
    }
}

} // namespace

void digestSequence(const QString& sequence,
                    const QMap<QString, bool>& beforeRules,
                    const QMap<QString, bool>& afterRules,
                    int maxMissedCleavages,
                    int /*minLength*/,
                    int maxLength,
                    QList<BasicPeptide>& peptides)
{
    const Cutter cutter{sequence, RuleTable(beforeRules), RuleTable(afterRules)};
    const QList<BasicPeptide> pieces = piecesOf(cutter, maxLength);
    peptides = pieces;
    for (qsizetype count = 2; count <= pieces.size(); ++count) {
        const QList<BasicPeptide> pass = joined(sequence, pieces, count, maxMissedCleavages);
        if (pass.isEmpty()) {
            break;
        }
        peptides.append(pass);
    }
    for (BasicPeptide& peptide : peptides) {
        peptide.missedCleavages = std::max<qint64>(peptide.missedCleavages, 0);
    }
}

void digestNonSpecific(const QString& sequence,
                       int minLength,
                       int maxLength,
                       QList<BasicPeptide>& peptides)
{
    const qsizetype shortest = std::max(minLength, 0);
    for (qsizetype start = 0; start < sequence.size(); ++start) {
        const qsizetype longest = std::min<qsizetype>(maxLength, sequence.size() - start);
        for (qsizetype length = shortest; length <= longest; ++length) {
            peptides.append(part(sequence, start, start + length - 1, 0));
        }
    }
}

QList<BasicPeptide> additionalPeptides(const QList<BasicPeptide>& peptides)
{
    if (peptides.isEmpty()) {
        return {};
    }
    QList<BasicPeptide> additional;
    for (const BasicPeptide& peptide : peptides) {
        if (losesMethionine(peptide)) {
            additional.append(withoutFirst(peptide));
        }
    }
    const qint64 proteinLength = peptides.constFirst().proteinLength;
    QList<BasicPeptide> clipped;
    for (const BasicPeptide& peptide : peptides + additional) {
        appendClipped(peptide, proteinLength, &clipped);
    }
    return additional + clipped;
}

std::string decorateAccessionWithIndex(const std::string& accession, int index)
{
    return std::to_string(index) + kDecorationSeparator + accession;
}

std::string stripIndexFromDecoratedAccession(const std::string& decorated)
{
    const auto separator = decorated.find(kDecorationSeparator);
    return separator == std::string::npos ? decorated : decorated.substr(separator + 1);
}

} // namespace zel
