#include "common/core_mini/src/algo/networks/DenseNetwork_p.h"

#include <utility>

namespace zel {

DenseNetwork::DenseNetwork(std::vector<Layer> layers)
    : m_layers(std::move(layers))
{}

Eigen::MatrixXf DenseNetwork::evaluate(const Eigen::MatrixXf& inputs) const
{
    Eigen::MatrixXf values = inputs;
    for (const Layer& layer : m_layers) {
        Eigen::MatrixXf next = layer.weights * values;
        next.colwise() += layer.biases;
        if (layer.activation == Activation::Relu) {
            next = next.cwiseMax(0.0F);
        }
        values.swap(next);
    }
    return values;
}

Eigen::VectorXf softmax(const Eigen::VectorXf& scores)
{
    const Eigen::VectorXf powers = (scores.array() - scores.maxCoeff()).exp();
    return powers / powers.sum();
}

} // namespace zel
