#include "chemical_model/LinearFragments.h"

#include "chemical_model/Residues.h"

#include <bit>

namespace chem {

namespace {

/// A ladder of fragments: 1, 2, ... residues from one terminus.
struct Series
{
    FragmentType type;
    bool nTerminal;
    double offsetDa; ///< what the fragment has beyond its residues
};

constexpr double kHydrogenDa = monoisotopicMass(Element::H);
constexpr double kWaterDa = kWater.monoisotopicMass();
constexpr double kAmmoniaDa = kAmmonia.monoisotopicMass();
constexpr double kCarbonMonoxideDa = monoisotopicMass(Element::C) + monoisotopicMass(Element::O);
constexpr double kCarbonDioxideDa = kCarbonMonoxideDa + monoisotopicMass(Element::O);

constexpr Series kSeries[] = {
    {FragmentType::A, true, -kCarbonMonoxideDa},
    {FragmentType::ADot, true, -kCarbonMonoxideDa + kHydrogenDa},
    {FragmentType::B, true, 0.0},
    {FragmentType::C, true, kAmmoniaDa},
    {FragmentType::CDot, true, kAmmoniaDa - kHydrogenDa},
    {FragmentType::BMinusH2O, true, -kWaterDa},
    {FragmentType::BMinusNH3, true, -kAmmoniaDa},
    {FragmentType::X, false, kCarbonDioxideDa},
    {FragmentType::YMinusH2O, false, 0.0},
    {FragmentType::XDot, false, kCarbonDioxideDa + kHydrogenDa},
    {FragmentType::Y, false, kWaterDa},
    {FragmentType::Z, false, kWaterDa - kAmmoniaDa},
    {FragmentType::ZDot, false, kWaterDa - kAmmoniaDa + kHydrogenDa},
};

constexpr FragmentTypeMask kLadderTypes = [] {
    FragmentTypeMask mask = 0;
    for (const Series& series : kSeries) {
        mask |= fragmentTypeBit(series.type);
    }
    return mask;
}();

constexpr FragmentTypeMask kPrecursorBit = fragmentTypeBit(FragmentType::Precursor);

qsizetype fragmentCount(const MoleculeComplex& complex, FragmentTypeMask types)
{
    const qsizetype length = complex.sequence().size();
    const qsizetype precursorCount = length > 0 && (types & kPrecursorBit) != 0 ? 1 : 0;
    return std::popcount(types & kLadderTypes) * length + precursorCount;
}

void setFragment(SimpleFragment& fragment, FragmentType type, double mass, QStringView residues)
{
    fragment.neutralMass = mass;
    fragment.residues.resize(0);
    fragment.residues.append(residues);
    fragment.type = type;
}

/// Fills fragmentCount(complex, types) elements from `fragment` on.
void writeFragments(const MoleculeComplex& complex,
                    FragmentTypeMask types,
                    SimpleFragment* fragment)
{
    const QStringView sequence(complex.sequence());
    for (const Series& series : kSeries) {
        if ((types & fragmentTypeBit(series.type)) == 0) {
            continue;
        }
        double mass = series.offsetDa;
        for (qsizetype length = 1; length <= sequence.size(); ++length) {
            const qsizetype added = series.nTerminal ? length - 1 : sequence.size() - length;
            mass += residueMass(sequence[added]);
            const QStringView residues =
                series.nTerminal ? sequence.first(length) : sequence.last(length);
            setFragment(*fragment++, series.type, mass, residues);
        }
    }
    if (!sequence.isEmpty() && (types & kPrecursorBit) != 0) {
        setFragment(*fragment, FragmentType::Precursor, complex.monoisotopicMass(), sequence);
    }
}

} // namespace

void generateLinearFragments(const MoleculeComplex& complex, QList<SimpleFragment>& fragments)
{
    const qsizetype oldCount = fragments.size();
    fragments.resize(oldCount + fragmentCount(complex, kAllFragmentTypes));
    writeFragments(complex, kAllFragmentTypes, fragments.data() + oldCount);
}

qsizetype generateLinearFragments(const MoleculeComplex& complex,
                                  FragmentTypeMask types,
                                  QList<SimpleFragment>& buffer)
{
    const qsizetype count = fragmentCount(complex, types);
    if (buffer.size() < count) {
        buffer.resize(count);
    }
    writeFragments(complex, types, buffer.data());
    return count;
}

} // namespace chem
