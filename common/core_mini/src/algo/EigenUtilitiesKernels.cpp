#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <vector>

namespace zel {

namespace {

/// Convolves sparse vectors of one length with one kernel, run by run. A run is a stretch of stored
/// entries so close together that the places which the kernel reaches from them leave no gap. It is
/// summed in a dense scratch of its own size, entry by entry in ascending order, and handed over in
/// ascending order, so that nothing has to be sorted or searched.
class RunConvolver
{
public:
    /// \param kernel  not empty
    RunConvolver(const Eigen::VectorXd& kernel, Eigen::Index length)
        : m_kernel(kernel.begin(), kernel.end())
        , m_length(length)
    {}

    /// Calls `visit(first, last)` for each run of the vector, with the places that it reaches, both
    /// included.
    template <typename Visit>
    void visitReach(const StoredEntries& entries, Visit visit) const
    {
        for (std::size_t begin = 0; begin < entries.size();) {
            const std::size_t end = runEnd(entries, begin);
            const Reach reach = reachOf(entries, begin, end);
            visit(reach.first, reach.last);
            begin = end;
        }
    }

    /// Calls `visit(first, sums)` for each run of the vector, with the first place that it reaches
    /// and the results from there on.
    template <typename Visit>
    void visitSums(const StoredEntries& entries, Visit visit)
    {
        for (std::size_t begin = 0; begin < entries.size();) {
            const std::size_t end = runEnd(entries, begin);
            const Reach reach = reachOf(entries, begin, end);
            const Eigen::Index cutOff = reach.first - firstReached(entries.indices[begin]);
            sumRun(entries, begin, end);
            visit(static_cast<int>(reach.first),
                  std::span<const double>(m_scratch).subspan(
                      static_cast<std::size_t>(cutOff),
                      static_cast<std::size_t>(reach.last - reach.first + 1)));
            begin = end;
        }
    }

private:
    /// Places inside the vector that a run reaches, both ends included.
    struct Reach
    {
        Eigen::Index first;
        Eigen::Index last;
    };

    Eigen::Index kernelSize() const { return static_cast<Eigen::Index>(m_kernel.size()); }

    /// The first place that the kernel reaches from an entry; may lie outside the vector.
    Eigen::Index firstReached(int index) const { return index - kernelSize() / 2; }

    Reach reachOf(const StoredEntries& entries, std::size_t begin, std::size_t end) const
    {
        const Eigen::Index last = firstReached(entries.indices[end - 1]) + kernelSize() - 1;
        return {std::max<Eigen::Index>(firstReached(entries.indices[begin]), 0),
                std::min(last, m_length - 1)};
    }

    std::size_t runEnd(const StoredEntries& entries, std::size_t begin) const
    {
        std::size_t end = begin + 1;
        while (end < entries.size() &&
               entries.indices[end] - entries.indices[end - 1] <= kernelSize()) {
            ++end;
        }
        return end;
    }

    /// Fills the scratch with the run's result, from its first place reached on.
    void sumRun(const StoredEntries& entries, std::size_t begin, std::size_t end)
    {
        const int first = entries.indices[begin];
        const int span = entries.indices[end - 1] - first;
        m_scratch.assign(static_cast<std::size_t>(span) + m_kernel.size(), 0.0);
        for (std::size_t i = begin; i < end; ++i) {
            const double value = entries.values[i];
            double* sums = m_scratch.data() + (entries.indices[i] - first);
            for (std::size_t k = 0; k < m_kernel.size(); ++k) {
                sums[k] += value * m_kernel[k];
            }
        }
    }

    std::vector<double> m_kernel;
    Eigen::Index m_length;
    std::vector<double> m_scratch;
};

/// Writes the columns of a matrix, each from its front, into room that is laid out beforehand.
class ColumnWriter
{
public:
    /// \param room  the most entries that each column can get
    ColumnWriter(Eigen::Index rows, const std::vector<Eigen::Index>& room, bool pruneZeros)
        : m_matrix(rows, static_cast<Eigen::Index>(room.size()))
        , m_pruneZeros(pruneZeros)
    {
        Eigen::Index total = 0;
        m_starts.reserve(room.size());
        for (const Eigen::Index count : room) {
            m_starts.push_back(total);
            total += count;
        }
        m_ends = m_starts;
        allocateEntries(&m_matrix, total);
    }

    /// Appends an entry to a column, below those that it has.
    void append(int row, int column, double value)
    {
        Eigen::Index& end = m_ends[static_cast<std::size_t>(column)];
        m_matrix.innerIndexPtr()[end] = row;
        m_matrix.valuePtr()[end] = value;
        // What is to be dropped is written over by the next one: no branch to mispredict.
        end += m_pruneZeros && std::abs(value) <= kNegligible ? 0 : 1;
    }

    /// Hands the matrix over, with the room that was not used closed up.
    void finish(Eigen::SparseMatrix<double>* result)
    {
        Eigen::Index count = 0;
        for (std::size_t column = 0; column < m_starts.size(); ++column) {
            const Eigen::Index start = m_starts[column];
            const Eigen::Index size = m_ends[column] - start;
            if (start != count) {
                std::copy_n(
                    m_matrix.innerIndexPtr() + start, size, m_matrix.innerIndexPtr() + count);
                std::copy_n(m_matrix.valuePtr() + start, size, m_matrix.valuePtr() + count);
            }
            count += size;
            m_matrix.outerIndexPtr()[column + 1] = static_cast<int>(count);
        }
        m_matrix.resizeNonZeros(count);
        result->swap(m_matrix); // Eigen copies on a return
    }

private:
    Eigen::SparseMatrix<double> m_matrix;
    bool m_pruneZeros;
    std::vector<Eigen::Index> m_starts;
    std::vector<Eigen::Index> m_ends;
};

} // namespace

Eigen::SparseMatrix<double> EigenUtilities::applyKernelColumnWiseToMatrix(
    const Eigen::SparseMatrix<double>& m, const Eigen::VectorXd& kernel, bool pruneZeros)
{
    Eigen::SparseMatrix<double> result(m.rows(), m.cols());
    if (kernel.size() == 0) {
        return result;
    }
    RunConvolver convolver(kernel, m.rows());
    std::vector<Eigen::Index> room(static_cast<std::size_t>(m.cols()), 0);
    for (int column = 0; column < m.cols(); ++column) {
        Eigen::Index& columnRoom = room[static_cast<std::size_t>(column)];
        convolver.visitReach(storedEntries(m, column),
                             [&columnRoom](Eigen::Index first, Eigen::Index last) {
                                 columnRoom += last - first + 1;
                             });
    }
    ColumnWriter writer(m.rows(), room, pruneZeros);
    for (int column = 0; column < m.cols(); ++column) {
        convolver.visitSums(storedEntries(m, column),
                            [&writer, column](int first, std::span<const double> sums) {
                                for (const double sum : sums) {
                                    writer.append(first++, column, sum);
                                }
                            });
    }
    writer.finish(&result);
    return result;
}

Eigen::SparseMatrix<double> EigenUtilities::applyKernelRowWiseToMatrix(
    const Eigen::SparseMatrix<double, Eigen::RowMajor>& m,
    const Eigen::VectorXd& kernel,
    bool pruneZeros)
{
    Eigen::SparseMatrix<double> result(m.rows(), m.cols());
    if (kernel.size() == 0 || m.cols() == 0) {
        return result;
    }
    // Rows are visited in ascending order, so their results can go straight to the columns.
    RunConvolver convolver(kernel, m.cols());
    std::vector<Eigen::Index> room(static_cast<std::size_t>(m.cols()) + 1, 0);
    for (int row = 0; row < m.rows(); ++row) {
        convolver.visitReach(storedEntries(m, row), [&room](Eigen::Index first, Eigen::Index last) {
            ++room[static_cast<std::size_t>(first)]; // steps of the room, summed up below
            --room[static_cast<std::size_t>(last) + 1];
        });
    }
    room.pop_back();
    std::partial_sum(room.begin(), room.end(), room.begin());
    ColumnWriter writer(m.rows(), room, pruneZeros);
    for (int row = 0; row < m.rows(); ++row) {
        convolver.visitSums(storedEntries(m, row),
                            [&writer, row](int first, std::span<const double> sums) {
                                for (const double sum : sums) {
                                    writer.append(row, first++, sum);
                                }
                            });
    }
    writer.finish(&result);
    return result;
}

} // namespace zel
