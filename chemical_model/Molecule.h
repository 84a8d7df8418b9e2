#pragma once

#include "chemical_model/Elements.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QString>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <utility>

namespace chem {

/// A composition: how many atoms of each element. A difference of two molecules has negative
/// counts, as a modification that takes atoms away. A plain value.
class ZEL_EXPORT Molecule
{
public:
    /// No atoms.
    constexpr Molecule() = default;
    constexpr Molecule(std::initializer_list<std::pair<Element, int>> atoms)
    {
        for (const auto& [element, count] : atoms) {
            add(element, count);
        }
    }

    /// Reads a formula: element symbols, each with an optional count as plain digits or as a signed
    /// number in parentheses, with optional blanks between: "C6H12O6", "N(-1)H(-1)O(1)". An element
    /// may come several times. No groups and no isotope labels.
    /// \return kBadParameterError, naming the position, for an empty text, an unknown element or
    ///         a bad count; the counts of each element are held to +-kMaxAtomCount
    static zel::Result<Molecule> fromFormula(const QString& formula);

    /// The formula in Hill order (C, H, then by symbol; without carbon all by symbol), readable by
    /// `fromFormula` unless it is empty: "C6H12O6", "HN(-1)".
    QString formula() const;

    constexpr std::int64_t count(Element element) const
    {
        return m_counts[static_cast<std::size_t>(element)];
    }
    constexpr void add(Element element, std::int64_t count)
    {
        m_counts[static_cast<std::size_t>(element)] += count;
    }

    /// Mass of the neutral molecule of the most abundant isotope of each element, Da.
    constexpr double monoisotopicMass() const
    {
        double mass = 0.0;
        for (std::size_t i = 0; i < kElementCount; ++i) {
            mass +=
                static_cast<double>(m_counts[i]) * chem::monoisotopicMass(static_cast<Element>(i));
        }
        return mass;
    }

    constexpr bool isEmpty() const { return *this == Molecule(); }

    constexpr Molecule& operator+=(const Molecule& other)
    {
        for (std::size_t i = 0; i < kElementCount; ++i) {
            m_counts[i] += other.m_counts[i];
        }
        return *this;
    }
    constexpr Molecule& operator-=(const Molecule& other)
    {
        for (std::size_t i = 0; i < kElementCount; ++i) {
            m_counts[i] -= other.m_counts[i];
        }
        return *this;
    }
    constexpr Molecule operator+(const Molecule& other) const { return Molecule(*this) += other; }
    constexpr Molecule operator-(const Molecule& other) const { return Molecule(*this) -= other; }
    friend constexpr bool operator==(const Molecule&, const Molecule&) = default;

    /// Greatest count of one element that a formula may reach.
    static constexpr std::int64_t kMaxAtomCount = 10'000'000;

private:
    std::array<std::int64_t, kElementCount> m_counts{};
};

} // namespace chem
