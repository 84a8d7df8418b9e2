#include "tools/zel/xlink/LinkedPeptides.h"

#include "chemical_model/Residues.h"

#include <QSet>

#include <algorithm>

namespace zel::tool {

using Link = xlink::AntibodyXlinkPredictor::Link;

namespace {

/// What a disulfide link costs, Da: two atoms of hydrogen. Source: AME 2012, 1.00782503223 u each.
constexpr double kLinkLoss = 2 * 1.00782503223;

/// A peptide of a chain.
struct Piece
{
    int chain = 0;
    qsizetype start = 0; ///< of its residues in the chain
    qsizetype end = 0;   ///< past the last

    auto operator<=>(const Piece&) const = default;
};

/// Peptides that links hold together.
struct Assembly
{
    QList<Piece> pieces;
    int linkCount = 0;
};

/// Whether trypsin cuts before a residue.
bool isCutBefore(const QString& sequence, qsizetype position)
{
    const QChar before = sequence[position - 1];
    return (before == u'K' || before == u'R') && sequence[position] != u'P';
}

Piece pieceAround(const AntibodyChains& chains, int chain, int position)
{
    const QString& sequence = chains[static_cast<std::size_t>(chain)].sequence;
    Piece piece{chain, position, position + 1};
    while (piece.start > 0 && !isCutBefore(sequence, piece.start)) {
        --piece.start;
    }
    while (piece.end < sequence.size() && !isCutBefore(sequence, piece.end)) {
        ++piece.end;
    }
    return piece;
}

/// Adds a link: joins the assemblies of its two peptides.
void join(const Piece& first, const Piece& second, QList<Assembly>* assemblies)
{
    Assembly joined{{}, 1};
    for (qsizetype i = assemblies->size() - 1; i >= 0; --i) {
        const Assembly& assembly = assemblies->at(i);
        if (assembly.pieces.contains(first) || assembly.pieces.contains(second)) {
            joined.pieces += assembly.pieces;
            joined.linkCount += assembly.linkCount;
            assemblies->removeAt(i);
        }
    }
    for (const Piece& piece : {first, second}) {
        if (!joined.pieces.contains(piece)) {
            joined.pieces.append(piece);
        }
    }
    std::ranges::sort(joined.pieces);
    assemblies->append(joined);
}

Peptide peptideOf(const AntibodyChains& chains, const Piece& piece)
{
    const AntibodyChain& chain = chains[static_cast<std::size_t>(piece.chain)];
    return {chain.label,
            static_cast<int>(chain.sequence.size()),
            chain.sequence.sliced(piece.start, piece.end - piece.start),
            static_cast<int>(piece.start),
            static_cast<int>(piece.end - 1),
            {}};
}

Peptide peptideOf(const AntibodyChains& chains, const Assembly& assembly)
{
    const QString cysteine = QStringLiteral("C");
    Peptide first = peptideOf(chains, assembly.pieces.constFirst());
    for (const Piece& piece : assembly.pieces.sliced(1)) {
        const Peptide other = peptideOf(chains, piece);
        const QString name = QStringLiteral("%1 %2-%3 %4")
                                 .arg(other.protein)
                                 .arg(other.start + 1)
                                 .arg(other.end + 1)
                                 .arg(other.sequence);
        first.modifications.addModificationWithCount(
            {1, {name, cysteine, chem::peptideMass(other.sequence), -1}});
    }
    first.modifications.addModificationWithCount(
        {assembly.linkCount, {QStringLiteral("Disulfide"), cysteine, -kLinkLoss, -1}});
    return first;
}

/// The same for all assemblies of the same sequences and number of links.
QString contentOf(const AntibodyChains& chains, const Assembly& assembly)
{
    QStringList sequences;
    for (const Piece& piece : assembly.pieces) {
        sequences.append(peptideOf(chains, piece).sequence);
    }
    sequences.sort();
    return sequences.join(QLatin1Char(' ')) + QString::number(assembly.linkCount);
}

} // namespace

PeptidesList linkedPeptides(const AntibodyChains& chains, const QList<Link>& links)
{
    QList<Assembly> assemblies;
    for (const Link& link : links) {
        join(pieceAround(chains, link.firstChain, link.firstPosition),
             pieceAround(chains, link.secondChain, link.secondPosition),
             &assemblies);
    }
    std::ranges::sort(assemblies, {}, [](const Assembly& a) { return a.pieces.constFirst(); });
    PeptidesList peptides;
    QSet<QString> seen;
    for (const Assembly& assembly : assemblies) {
        const QString content = contentOf(chains, assembly);
        if (!seen.contains(content)) {
            seen.insert(content);
            peptides.addPeptide(peptideOf(chains, assembly));
        }
    }
    return peptides;
}

} // namespace zel::tool
