#pragma once

#include <Eigen/Core>

#include <vector>

namespace zel {

/// A feed-forward network of dense layers: y = activation(W x + b), layer after layer.
class DenseNetwork
{
public:
    /// Stored in files: do not change.
    enum class Activation : unsigned { None = 0, Relu = 1 };

    struct Layer
    {
        Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> weights;
        Eigen::VectorXf biases; ///< one for each row of the weights
        Activation activation = Activation::None;
    };

    /// \param layers  at least one; each takes what the one before it gives
    explicit DenseNetwork(std::vector<Layer> layers);

    Eigen::Index inputSize() const { return m_layers.front().weights.cols(); }
    Eigen::Index outputSize() const { return m_layers.back().weights.rows(); }

    /// \param inputs  one example a column
    /// \return the outputs, one example a column
    Eigen::MatrixXf evaluate(const Eigen::MatrixXf& inputs) const;

private:
    std::vector<Layer> m_layers;
};

/// Turns scores of any size into probabilities that sum to 1.
Eigen::VectorXf softmax(const Eigen::VectorXf& scores);

} // namespace zel
