#include "common/core_mini/src/algo/networks/ChargeDeterminatorNN.h"

#include "common/core_mini/src/algo/isotopes/IsotopeLattice_p.h"
#include "common/core_mini/src/algo/networks/NetworkFile_p.h"
#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"

#include <QString>

namespace zel {

namespace {

/// How probable a charge must be. Two peaks stand at the distance of a charge by chance rather
/// often, as most hills of a run are noise, and two that belong together look no different.
constexpr double kLeastProbability = 0.5;
constexpr double kLeastProbabilityOfPair = 0.95;
constexpr int kIsotopesOfPair = 2;
/// How far from its place an isotope is counted, bins: 15 ppm at m/z 1000.
constexpr double kIsotopeWindow = 15.0;

/// Peaks in a row at the distance of the charge, the one in the middle among them.
int isotopesInARow(const Eigen::SparseVector<double>& slice, int charge)
{
    const IsotopeLattice lattice(storedEntries(slice), charge, kIsotopeWindow);
    int first = 0;
    while (lattice.greatestAt(first - 1) > 0.0) {
        --first;
    }
    int last = 0;
    while (lattice.greatestAt(last + 1) > 0.0) {
        ++last;
    }
    return last - first + 1;
}

double leastProbability(const Eigen::SparseVector<double>& slice, int charge)
{
    return isotopesInARow(slice, charge) > kIsotopesOfPair ? kLeastProbability
                                                           : kLeastProbabilityOfPair;
}

} // namespace

Error ChargeDeterminatorNN::init(const QString& networkFilePath)
{
    ZEL_ASSIGN_OR_RETURN(m_network,
                         networkfile::load(networkFilePath,
                                           QLatin1StringView(networkfile::kChargeNetwork),
                                           networkinputs::chargeInputCount(),
                                           networkinputs::kChargeOutputs));
    return kNoError;
}

void ChargeDeterminatorNN::determineCharge(const Eigen::SparseVector<double, 0, int>& profile,
                                           int* charge,
                                           double* score) const
{
    *charge = 0;
    *score = 0.0;
    if (m_network && networkinputs::isUsable(profile)) {
        const Eigen::VectorXf probabilities =
            softmax(m_network->evaluate(networkinputs::chargeInputs(profile)));
        *score = probabilities.maxCoeff(charge);
        if (*charge > 0 && *score < leastProbability(profile, *charge)) {
            *charge = 0;
        }
    }
}

int ChargeDeterminatorNN::determineCharge(const Eigen::SparseVector<double, 0, int>& profile) const
{
    int charge = 0;
    double score = 0.0;
    determineCharge(profile, &charge, &score);
    return charge;
}

} // namespace zel
