#pragma once

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>
#include <QList>
#include <QPointF>

#include <vector>

namespace zel {

/// Kernels, smoothing, local maxima and conversions on Eigen's vectors and sparse matrices.
///
/// Throughout, a convolution with a kernel of n points is
///     out[i] = sum over k of kernel[k] * in[i + n / 2 - k],
/// so the kernel's centre is at n / 2. NaN and infinite values pass through. All operations are
/// free of state and safe to call from several threads.
class ZEL_EXPORT EigenUtilities
{
public:
    /// One local maximum of a matrix.
    struct MatrixApexIndex
    {
        int row = 0;
        int column = 0;
        double value = 0.0;

        friend bool operator==(const MatrixApexIndex&, const MatrixApexIndex&) = default;
    };

    /// The weights of a Savitzky-Golay filter: their dot product with a window of evenly spaced
    /// samples is the `derivative`-th derivative, at the window's centre, of the polynomial of
    /// least squares through the samples.
    /// \param windowSize       odd, at least polynomialOrder + 2
    /// \param polynomialOrder  at least 0
    /// \param derivative       0 for smoothing, at most polynomialOrder
    /// \param rate             samples per unit of x
    /// \param kernel           becomes a column vector of windowSize weights, first sample first;
    ///                         mind that a convolution takes the weights in reverse order, which
    ///                         turns the sign of an odd derivative
    /// \return kBadParameterError, with `kernel` unchanged
    /// Source: Savitzky and Golay, Anal. Chem. 36 (1964) 1627; Gorry, Anal. Chem. 62 (1990) 570.
    template <typename Matrix>
    static Error buildSavitzkyGolayKernel(
        int windowSize, int polynomialOrder, int derivative, int rate, Matrix* kernel)
    {
        Error e;
        Eigen::VectorXd weights;
        ZEL_RETURN_IF_ERROR(
            savitzkyGolayWeights(windowSize, polynomialOrder, derivative, rate, &weights));
        *kernel = weights.cast<typename Matrix::Scalar>();
        return kNoError;
    }

    /// Convolves the signal with the kernel, in place. The signal goes on with its end values
    /// beyond its ends, so that the level at the ends is kept; see convolveRepeatingEnds.
    /// \return kBadParameterError, with the signal unchanged, for an empty kernel
    static Error savitzkyGolaySmooth(const Eigen::VectorXd& kernel, Eigen::VectorXd* signal);

    /// Sums the points (m/z, intensity) into bins of m/z; see FeatureFinderUtilities::hashMz. The
    /// intensities of one bin are added in ascending order. Points at or beyond `length`, or below
    /// bin 0, are left out with a debug line in the log. An empty list leaves `out` as it is.
    /// \param length  number of bins, at least 0: the length that `out` gets
    /// \note O(n) for points in ascending m/z, else O(n log n).
    template <typename Scalar, int Options>
    static Error vectorizePoint2dList(const QList<QPointF>& points,
                                      int length,
                                      int binsPerUnit,
                                      Eigen::SparseVector<Scalar, Options, int>* out)
    {
        if (points.isEmpty()) {
            return kNoError;
        }
        const std::vector<BinSum> sums = sumIntoBins(points, length, binsPerUnit);
        out->resize(length);
        out->reserve(static_cast<Eigen::Index>(sums.size()));
        for (const BinSum& bin : sums) {
            out->insertBack(bin.index) = static_cast<Scalar>(bin.sum);
        }
        return kNoError;
    }

    /// Copies x and y of the points into two vectors, each value rounded to single precision on the
    /// way.
    template <typename Matrix>
    static Error point2dListToEigenVector(const QList<QPointF>& points, Matrix* x, Matrix* y)
    {
        Error e;
        resizeVector(x, points.size());
        resizeVector(y, points.size());
        ZEL_RETURN_IF_ERROR(ErrorUtils::equal<long long>(
            x->size(), y->size(), Error(kError, "Output Vectors are unequal size")));
        for (qsizetype i = 0; i < points.size(); ++i) {
            (*x)(i) = static_cast<typename Matrix::Scalar>(static_cast<float>(points[i].x()));
            (*y)(i) = static_cast<typename Matrix::Scalar>(static_cast<float>(points[i].y()));
        }
        return kNoError;
    }

    /// A Gaussian of `size` points, symmetric about its middle; an even size has two middle points
    /// of equal height. Empty for a size below 1.
    /// \param sigma      standard deviation, in points; one that is not positive gives a unit
    ///                   impulse at size / 2
    /// \param normalize  true: the sum of the points is 1; false: the highest is 1
    static Eigen::VectorXd buildGaussianFilter1D(int size, double sigma, bool normalize);

    /// Each column convolved with the kernel. Beyond the ends of a column the signal is 0, with no
    /// correction of the level there; the shape is kept.
    /// \param pruneZeros  true: values of magnitude 1e-12 or less are not stored; false: every
    ///                    place that the kernel reaches from a stored entry is, zeros too
    /// \return compressed; must hold less than 2^31 entries. Initialise or swap with it: Eigen
    ///         copies on an assignment
    /// \note O(stored entries * kernel size + columns), however large the matrix.
    static Eigen::SparseMatrix<double> applyKernelColumnWiseToMatrix(
        const Eigen::SparseMatrix<double>& m, const Eigen::VectorXd& kernel, bool pruneZeros);

    /// Each row convolved with the kernel, else as applyKernelColumnWiseToMatrix.
    static Eigen::SparseMatrix<double> applyKernelRowWiseToMatrix(
        const Eigen::SparseMatrix<double, Eigen::RowMajor>& m,
        const Eigen::VectorXd& kernel,
        bool pruneZeros);

    /// The local maxima above 1e-12, by ascending column and then row. The neighbours of a cell are
    /// the eight around it; one that is not stored counts as 0. Neighbouring cells of equal value
    /// make a plateau, which is one maximum, named by its first cell, provided that none of its
    /// neighbours is higher. NaN is never higher or equal.
    /// \note O(stored entries); plateaus cost a bisection for each of their cells.
    static QList<MatrixApexIndex> findSparseMatrixApexes(const Eigen::SparseMatrix<double>& m);

    /// The indices of the `count` values nearest to `cutoff`, nearest first, of equally near ones
    /// the first; all of them when there are fewer. NaN is farthest.
    static QList<int> returnIndexNearestToCutoff(const Eigen::RowVectorXd& values,
                                                 double cutoff,
                                                 int count);

    /// The same with values and cutoff rounded to single precision first.
    static QList<int> returnIndexNearestToCutoffF(const Eigen::RowVectorXd& values,
                                                  double cutoff,
                                                  int count);

private:
    struct BinSum
    {
        int index;
        double sum;
    };

    static Error savitzkyGolayWeights(
        int windowSize, int polynomialOrder, int derivative, int rate, Eigen::VectorXd* weights);

    /// The sums of the bins that hold a point, ascending.
    static std::vector<BinSum> sumIntoBins(const QList<QPointF>& points,
                                           int length,
                                           int binsPerUnit);

    template <typename Matrix>
    static void resizeVector(Matrix* vector, Eigen::Index size)
    {
        if constexpr (Matrix::IsVectorAtCompileTime) {
            vector->resize(size);
        } else {
            vector->resize(size, 1);
        }
    }
};

} // namespace zel
