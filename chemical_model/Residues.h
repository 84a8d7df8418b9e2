#pragma once

#include "chemical_model/Molecule.h"

#include <QChar>
#include <QStringView>

#include <array>

namespace chem {

inline constexpr Molecule kWater{{Element::H, 2}, {Element::O, 1}};
inline constexpr Molecule kAmmonia{{Element::N, 1}, {Element::H, 3}};

namespace detail {

constexpr Molecule residue(int c, int h, int n, int o, int s = 0, int se = 0)
{
    return {{Element::C, c},
            {Element::H, h},
            {Element::N, n},
            {Element::O, o},
            {Element::S, s},
            {Element::Se, se}};
}

/// By letter, 'A' at 0: the amino acid less the water that its peptide bond costs. B, X and Z stand
/// for no composition of their own and are empty.
inline constexpr std::array<Molecule, 26> kResidues = {
    residue(3, 5, 1, 1),       // A alanine
    Molecule(),                // B
    residue(3, 5, 1, 1, 1),    // C cysteine
    residue(4, 5, 1, 3),       // D aspartic acid
    residue(5, 7, 1, 3),       // E glutamic acid
    residue(9, 9, 1, 1),       // F phenylalanine
    residue(2, 3, 1, 1),       // G glycine
    residue(6, 7, 3, 1),       // H histidine
    residue(6, 11, 1, 1),      // I isoleucine
    residue(6, 11, 1, 1),      // J leucine or isoleucine
    residue(6, 12, 2, 1),      // K lysine
    residue(6, 11, 1, 1),      // L leucine
    residue(5, 9, 1, 1, 1),    // M methionine
    residue(4, 6, 2, 2),       // N asparagine
    residue(12, 19, 3, 2),     // O pyrrolysine
    residue(5, 7, 1, 1),       // P proline
    residue(5, 8, 2, 2),       // Q glutamine
    residue(6, 12, 4, 1),      // R arginine
    residue(3, 5, 1, 2),       // S serine
    residue(4, 7, 1, 2),       // T threonine
    residue(3, 5, 1, 1, 0, 1), // U selenocysteine
    residue(5, 9, 1, 1),       // V valine
    residue(11, 10, 2, 1),     // W tryptophan
    Molecule(),                // X
    residue(9, 9, 1, 2),       // Y tyrosine
    Molecule(),                // Z
};

inline constexpr std::array<double, 26> kResidueMasses = [] {
    std::array<double, 26> masses{};
    for (std::size_t i = 0; i < masses.size(); ++i) {
        masses[i] = kResidues[i].monoisotopicMass();
    }
    return masses;
}();

/// Index into the tables; -1 for anything but a letter.
constexpr int residueIndex(char16_t letter)
{
    const int upper = letter >= u'a' && letter <= u'z' ? letter - u'a' : letter - u'A';
    return upper >= 0 && upper < 26 ? upper : -1;
}

} // namespace detail

/// Monoisotopic mass of an amino acid residue by its one-letter code, upper or lower case, Da;
/// 0 for a letter without a mass of its own (B, X, Z) and for any other character.
constexpr double residueMass(QChar letter)
{
    const int index = detail::residueIndex(letter.unicode());
    return index < 0 ? 0.0 : detail::kResidueMasses[static_cast<std::size_t>(index)];
}

/// Composition of a residue; empty where `residueMass` is 0.
constexpr Molecule residueComposition(QChar letter)
{
    const int index = detail::residueIndex(letter.unicode());
    return index < 0 ? Molecule() : detail::kResidues[static_cast<std::size_t>(index)];
}

/// Neutral monoisotopic mass of the linear peptide of these residues, Da: their sum and a water.
inline double peptideMass(QStringView sequence)
{
    double mass = kWater.monoisotopicMass();
    for (const QChar letter : sequence) {
        mass += residueMass(letter);
    }
    return mass;
}

} // namespace chem
