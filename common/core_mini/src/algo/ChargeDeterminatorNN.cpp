#include "common/core_mini/src/algo/ChargeDeterminatorNN.h"

#include "common/core_mini/src/algo/ImmutableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/NetworkFile_p.h"
#include "common/core_mini/src/algo/NetworkInputs_p.h"

#include <QString>

namespace zel {

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
