#include "common/core_mini/src/algo/networks/MonoisotopeDeterminatorNN.h"

#include "common/core_mini/src/algo/networks/NetworkFile_p.h"
#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "common/stable/PhysicalConstants.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zel {

namespace {

/// An offset resembles averagine at least this share as well as the one that does best. The network
/// alone takes an isotope that is weaker than averagine has it for a sign that the first one is
/// lost; in real runs it mostly is just weak.
constexpr float kLeastShareOfCosine = 0.75F;
constexpr float kImpossible = std::numeric_limits<float>::lowest();

/// No cluster is lighter.
constexpr double kLeastMassDa = 200.0;

/// The greatest offset at which the ion keeps that mass.
int greatestOffset(double mz, int charge)
{
    const double spare = (mz - kProtonMassDa) * charge - kLeastMassDa;
    const double steps = std::clamp(spare / kCarbonIsotopeSpacingDa,
                                    0.0,
                                    static_cast<double>(networkinputs::kOffsetOutputs - 1));
    return static_cast<int>(steps);
}

} // namespace

Error MonoisotopeDeterminatorNN::init(const QString& networkFilePath)
{
    ZEL_ASSIGN_OR_RETURN(m_network,
                         networkfile::load(networkFilePath,
                                           QLatin1StringView(networkfile::kOffsetNetwork),
                                           networkinputs::offsetInputCount(),
                                           networkinputs::kOffsetOutputs));
    return kNoError;
}

int MonoisotopeDeterminatorNN::determineMonoisotopeOffset(
    const Eigen::SparseVector<double, 0, int>& profile, double mz, int charge) const
{
    if (!m_network || !networkinputs::isUsable(profile) || charge < 1 ||
        charge >= networkinputs::kChargeOutputs || !std::isfinite(mz)) {
        return 0;
    }
    const Eigen::VectorXf inputs = networkinputs::offsetInputs(profile, mz, charge);
    const Eigen::VectorXf cosines = networkinputs::averagineCosines(inputs);
    const float leastCosine = kLeastShareOfCosine * cosines.maxCoeff();
    const Eigen::VectorXf scores =
        (cosines.array() >= leastCosine).select(m_network->evaluate(inputs), kImpossible);
    int offset = 0;
    scores.maxCoeff(&offset);
    return std::min(offset, greatestOffset(mz, charge));
}

} // namespace zel
