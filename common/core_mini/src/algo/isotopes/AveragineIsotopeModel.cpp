#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"

#include "chemical_model/IsotopeDistribution.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

/// Below this mass, Da, there is no molecule that a pattern could be averaged over.
constexpr double kLeastMassDa = 20.0;

} // namespace

Error AveragineIsotopeModel::init(const MolecularFormula& averagine)
{
    bool usable = true;
    for (int type = 0; type < MolecularFormula::kAtomTypeCount; ++type) {
        const double count = averagine.count(static_cast<MolecularFormula::AtomType>(type));
        usable = usable && count >= 0.0 && std::isfinite(count);
    }
    const double unitMass = averagine.monoisotopicMass();
    if (!usable || !(unitMass > 0.0) || !std::isfinite(unitMass)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "The counts of an average molecule must be finite and not negative, and "
                         "not all of them zero");
    }
    m_averagine = averagine;
    m_unitMass = unitMass;
    return kNoError;
}

Result<int> AveragineIsotopeModel::peakIntensityRatiosFromMass(double mass,
                                                               QList<double>* ratios) const
{
    Error e;
    ratios->clear();
    if (m_unitMass == 0.0) {
        ZEL_RETURN_ERROR(kError, "The isotope model was not initialized");
    }
    if (!(mass >= 0.0) || !std::isfinite(mass)) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("The mass of an isotope pattern must be finite and not negative, but is "
                           "%1")
                .arg(mass));
    }
    if (mass < kLeastMassDa) {
        ratios->append(1.0);
        return 0;
    }
    const double unitCount = mass / m_unitMass;
    std::array<chem::ElementAmount, MolecularFormula::kAtomTypeCount> composition;
    for (std::size_t i = 0; i < composition.size(); ++i) {
        const auto type = static_cast<MolecularFormula::AtomType>(i);
        composition[i] = {static_cast<chem::Element>(i), unitCount * m_averagine.count(type)};
    }
    chem::IsotopeProbabilities pattern;
    ZEL_RETURN_IF_ERROR(chem::aggregatedIsotopeDistribution(composition, &pattern));
    chem::cutIsotopePattern(&pattern, true);
    *ratios = QList<double>(pattern.cbegin(), pattern.cend());
    return static_cast<int>(std::max_element(pattern.cbegin(), pattern.cend()) - pattern.cbegin());
}

const AveragineIsotopeModel& AveragineIsotopeModel::senko()
{
    static const AveragineIsotopeModel model = [] {
        MolecularFormula averagine;
        averagine.setMolecularFormula({{MolecularFormula::Carbon, 4.9384},
                                       {MolecularFormula::Hydrogen, 7.7583},
                                       {MolecularFormula::Nitrogen, 1.3577},
                                       {MolecularFormula::Oxygen, 1.4773},
                                       {MolecularFormula::Sulfur, 0.0417}});
        AveragineIsotopeModel initialized;
        [[maybe_unused]] const Error e = initialized.init(averagine);
        Q_ASSERT(!e.hasError());
        return initialized;
    }();
    return model;
}

} // namespace zel
