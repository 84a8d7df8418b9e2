#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace chem {

/// The elements that molecules of this library are made of. The numbers of the first five are those
/// of zel::MolecularFormula::AtomType.
enum class Element : std::uint8_t { C, H, N, O, S, P, Se, F, Na, Si, Cl, K, Ca, Fe, Cu, Zn, Br, I };

inline constexpr std::size_t kElementCount = 18;

/// One stable isotope.
struct Isotope
{
    int massNumber;
    double massDa;
    double abundance; ///< share of the atoms of the element, 0 to 1
};

/// What an element is made of.
struct ElementInfo
{
    const char* symbol;
    std::span<const Isotope> isotopes; ///< ascending in mass number

    /// The most abundant isotope. Monoisotopic masses are made of these.
    constexpr const Isotope& principalIsotope() const
    {
        const Isotope* principal = &isotopes.front();
        for (const Isotope& isotope : isotopes) {
            principal = isotope.abundance > principal->abundance ? &isotope : principal;
        }
        return *principal;
    }
};

namespace detail {

// Masses: NIST, Atomic Weights and Isotopic Compositions (Wang et al., The AME2012 atomic mass
// evaluation). Abundances: Meija et al., Isotopic compositions of the elements 2013 (IUPAC), Pure
// Appl. Chem. 88 (2016) 293, as the NIST table gives them.
inline constexpr Isotope kCarbon[] = {{12, 12.0, 0.9893}, {13, 13.00335483507, 0.0107}};
inline constexpr Isotope kHydrogen[] = {{1, 1.00782503223, 0.999885}, {2, 2.01410177812, 0.000115}};
inline constexpr Isotope kNitrogen[] = {{14, 14.00307400443, 0.99636},
                                        {15, 15.00010889888, 0.00364}};
inline constexpr Isotope kOxygen[] = {
    {16, 15.99491461957, 0.99757}, {17, 16.99913175650, 0.00038}, {18, 17.99915961286, 0.00205}};
inline constexpr Isotope kSulfur[] = {{32, 31.9720711744, 0.9499},
                                      {33, 32.9714589098, 0.0075},
                                      {34, 33.967867004, 0.0425},
                                      {36, 35.96708071, 0.0001}};
inline constexpr Isotope kPhosphorus[] = {{31, 30.97376199842, 1.0}};
inline constexpr Isotope kSelenium[] = {{74, 73.922475934, 0.0089},
                                        {76, 75.919213704, 0.0937},
                                        {77, 76.919914154, 0.0763},
                                        {78, 77.91730928, 0.2377},
                                        {80, 79.9165218, 0.4961},
                                        {82, 81.9166995, 0.0873}};
inline constexpr Isotope kFluorine[] = {{19, 18.99840316273, 1.0}};
inline constexpr Isotope kSodium[] = {{23, 22.9897692820, 1.0}};
inline constexpr Isotope kSilicon[] = {
    {28, 27.97692653465, 0.92223}, {29, 28.97649466490, 0.04685}, {30, 29.973770136, 0.03092}};
inline constexpr Isotope kChlorine[] = {{35, 34.968852682, 0.7576}, {37, 36.965902602, 0.2424}};
inline constexpr Isotope kPotassium[] = {
    {39, 38.9637064864, 0.932581}, {40, 39.963998166, 0.000117}, {41, 40.9618252579, 0.067302}};
inline constexpr Isotope kCalcium[] = {{40, 39.962590863, 0.96941},
                                       {42, 41.95861783, 0.00647},
                                       {43, 42.95876644, 0.00135},
                                       {44, 43.95548156, 0.02086},
                                       {46, 45.9536890, 0.00004},
                                       {48, 47.95252276, 0.00187}};
inline constexpr Isotope kIron[] = {{54, 53.93960899, 0.05845},
                                    {56, 55.93493633, 0.91754},
                                    {57, 56.93539284, 0.02119},
                                    {58, 57.93327443, 0.00282}};
inline constexpr Isotope kCopper[] = {{63, 62.92959772, 0.6915}, {65, 64.92778970, 0.3085}};
inline constexpr Isotope kZinc[] = {{64, 63.92914201, 0.4917},
                                    {66, 65.92603381, 0.2773},
                                    {67, 66.92712775, 0.0404},
                                    {68, 67.92484455, 0.1845},
                                    {70, 69.9253192, 0.0061}};
inline constexpr Isotope kBromine[] = {{79, 78.9183376, 0.5069}, {81, 80.9162897, 0.4931}};
inline constexpr Isotope kIodine[] = {{127, 126.9044719, 1.0}};

/// In the order of `Element`.
inline constexpr std::array<ElementInfo, kElementCount> kElements = {{{"C", kCarbon},
                                                                      {"H", kHydrogen},
                                                                      {"N", kNitrogen},
                                                                      {"O", kOxygen},
                                                                      {"S", kSulfur},
                                                                      {"P", kPhosphorus},
                                                                      {"Se", kSelenium},
                                                                      {"F", kFluorine},
                                                                      {"Na", kSodium},
                                                                      {"Si", kSilicon},
                                                                      {"Cl", kChlorine},
                                                                      {"K", kPotassium},
                                                                      {"Ca", kCalcium},
                                                                      {"Fe", kIron},
                                                                      {"Cu", kCopper},
                                                                      {"Zn", kZinc},
                                                                      {"Br", kBromine},
                                                                      {"I", kIodine}}};

} // namespace detail

constexpr const ElementInfo& elementInfo(Element element)
{
    return detail::kElements[static_cast<std::size_t>(element)];
}

/// Mass of the most abundant isotope, Da.
constexpr double monoisotopicMass(Element element)
{
    return elementInfo(element).principalIsotope().massDa;
}

/// The element of this symbol, in its usual spelling ("C", "Na"); nothing for an unknown one.
inline std::optional<Element> elementOfSymbol(QStringView symbol)
{
    for (std::size_t i = 0; i < kElementCount; ++i) {
        if (symbol == QLatin1StringView(detail::kElements[i].symbol)) {
            return static_cast<Element>(i);
        }
    }
    return std::nullopt;
}

} // namespace chem
