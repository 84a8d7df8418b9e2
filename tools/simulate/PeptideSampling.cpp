#include "tools/simulate/PeptideSampling.h"

#include "tools/io/FastaFile.h"
#include "tools/simulate/RandomStream.h"

#include <QSet>

#include <algorithm>

namespace zel::simulate {

namespace {

struct ResidueFrequency
{
    char16_t letter;
    double percent;
};

/// Amino acid composition of the UniProtKB/Swiss-Prot protein knowledgebase, from its release
/// statistics.
constexpr ResidueFrequency kFrequencies[] = {
    {u'A', 8.25}, {u'R', 5.53}, {u'N', 4.06}, {u'D', 5.46}, {u'C', 1.38},
    {u'Q', 3.93}, {u'E', 6.72}, {u'G', 7.07}, {u'H', 2.27}, {u'I', 5.91},
    {u'L', 9.65}, {u'K', 5.80}, {u'M', 2.41}, {u'F', 3.86}, {u'P', 4.74},
    {u'S', 6.64}, {u'T', 5.36}, {u'W', 1.10}, {u'Y', 2.92}, {u'V', 6.86}};

bool isCommonResidue(QChar letter)
{
    return std::ranges::find(kFrequencies, letter.unicode(), &ResidueFrequency::letter) !=
           std::end(kFrequencies);
}

bool cutsBehind(QChar residue)
{
    return residue == u'K' || residue == u'R';
}

/// The places where a protein is cut, its two ends included.
QList<qsizetype> cutsOf(const QString& protein)
{
    QList<qsizetype> cuts = {0};
    for (qsizetype i = 0; i + 1 < protein.size(); ++i) {
        if (cutsBehind(protein[i]) && protein[i + 1] != u'P') {
            cuts.append(i + 1);
        }
    }
    cuts.append(protein.size());
    return cuts;
}

QString randomPeptide(RandomStream& random, int maxLength)
{
    QString peptide;
    while (peptide.size() <= maxLength && (peptide.isEmpty() || !cutsBehind(peptide.back()))) {
        peptide += randomResidue(random);
    }
    return peptide;
}

Result<QStringList> randomPeptides(const SimulationSettings& settings)
{
    constexpr int attemptsPerPeptide = 1000;
    RandomStream random(settings.seed, {RandomStream::Sequences});
    QStringList peptides;
    QSet<QString> seen;
    int attemptsLeft = attemptsPerPeptide;
    while (peptides.size() < settings.peptideCount) {
        const QString peptide = randomPeptide(random, settings.maxPeptideLength);
        const bool fits = peptide.size() >= settings.minPeptideLength &&
                          peptide.size() <= settings.maxPeptideLength;
        if (fits && !seen.contains(peptide)) {
            seen.insert(peptide);
            peptides.append(peptide);
            attemptsLeft = attemptsPerPeptide;
        } else if (--attemptsLeft == 0) {
            ZEL_RETURN_ERROR(
                kBadParameterError,
                QStringLiteral("%1 different peptides of %2 to %3 residues are wanted, "
                               "but only %4 were found")
                    .arg(settings.peptideCount)
                    .arg(settings.minPeptideLength)
                    .arg(settings.maxPeptideLength)
                    .arg(peptides.size()));
        }
    }
    return peptides;
}

/// Keeps `count` of the list, all with the same chance, in random order.
void keepRandom(QStringList& list, qsizetype count, RandomStream& random)
{
    const qsizetype keptCount = std::min(count, list.size());
    for (qsizetype i = 0; i < keptCount; ++i) {
        const auto left = static_cast<std::uint64_t>(list.size() - i);
        list.swapItemsAt(i, i + static_cast<qsizetype>(random.below(left)));
    }
    list.resize(keptCount);
}

} // namespace

QChar randomResidue(RandomStream& random)
{
    double sum = 0.0;
    for (const ResidueFrequency& residue : kFrequencies) {
        sum += residue.percent;
    }
    double left = random.uniform() * sum;
    for (const ResidueFrequency& residue : kFrequencies) {
        left -= residue.percent;
        if (left < 0.0) {
            return residue.letter;
        }
    }
    return std::rbegin(kFrequencies)->letter;
}

QStringList digest(const QStringList& proteins, const SimulationSettings& settings)
{
    QStringList peptides;
    QSet<QString> seen;
    for (const QString& protein : proteins) {
        const QList<qsizetype> cuts = cutsOf(protein);
        for (qsizetype first = 0; first + 1 < cuts.size(); ++first) {
            const qsizetype last = std::min(first + 1 + settings.missedCleavages, cuts.size() - 1);
            for (qsizetype end = first + 1; end <= last; ++end) {
                const qsizetype length = cuts[end] - cuts[first];
                if (length < settings.minPeptideLength || length > settings.maxPeptideLength) {
                    continue;
                }
                const QString peptide = protein.sliced(cuts[first], length);
                if (std::ranges::all_of(peptide, isCommonResidue) && !seen.contains(peptide)) {
                    seen.insert(peptide);
                    peptides.append(peptide);
                }
            }
        }
    }
    return peptides;
}

Result<QStringList> readFasta(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const io::FastaFile file, io::readFasta(path));
    QStringList proteins;
    for (const io::FastaRecord& record : file.records) {
        proteins.append(record.sequence);
    }
    return proteins;
}

Result<QStringList> choosePeptides(const SimulationSettings& settings)
{
    if (settings.fastaPath.isEmpty()) {
        return randomPeptides(settings);
    }
    ZEL_ASSIGN_OR_RETURN(const QStringList proteins, readFasta(settings.fastaPath));
    QStringList peptides = digest(proteins, settings);
    if (peptides.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("FASTA file %1 has %2 proteins but no tryptic peptide of "
                                        "%3 to %4 residues")
                             .arg(settings.fastaPath,
                                  QString::number(proteins.size()),
                                  QString::number(settings.minPeptideLength),
                                  QString::number(settings.maxPeptideLength)));
    }
    RandomStream random(settings.seed, {RandomStream::Sequences});
    keepRandom(peptides, settings.peptideCount, random);
    return peptides;
}

} // namespace zel::simulate
