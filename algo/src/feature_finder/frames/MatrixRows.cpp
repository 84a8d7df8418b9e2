#include "common/core_mini/src/algo/EigenUtilities.h"
#include "feature_finder/frames/MatrixRows_p.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace zel {

namespace {

constexpr int kBits = 64;

std::size_t wordOf(int row)
{
    return static_cast<std::size_t>(row / kBits);
}

std::uint64_t bitOf(int row)
{
    return std::uint64_t{1} << (row % kBits);
}

/// Where each of the lists of these sizes starts when they follow each other, and the end.
std::vector<int> startsOf(const std::vector<int>& sizes)
{
    std::vector<int> starts(sizes.size() + 1, 0);
    std::partial_sum(sizes.begin(), sizes.end(), starts.begin() + 1);
    return starts;
}

/// Makes a sparse matrix with room for columns of these sizes.
Eigen::SparseMatrix<double> matrixOf(Eigen::Index rows, const std::vector<int>& starts)
{
    Eigen::SparseMatrix<double> matrix(rows, static_cast<Eigen::Index>(starts.size()) - 1);
    allocateEntries(&matrix, starts.back());
    std::copy(starts.begin(), starts.end(), matrix.outerIndexPtr());
    return matrix;
}

} // namespace

MatrixRows::MatrixRows(const Eigen::SparseMatrix<double>& matrix)
    : m_occupied(wordOf(static_cast<int>(matrix.rows())) + 1, 0)
    , m_rowCount(matrix.rows())
{
    for (int column = 0; column < matrix.cols(); ++column) {
        for (const int row : storedEntries(matrix, column).indices) {
            m_occupied[wordOf(row)] |= bitOf(row);
        }
    }
    m_ranks.reserve(m_occupied.size());
    for (std::size_t word = 0; word < m_occupied.size(); ++word) {
        m_ranks.push_back(static_cast<int>(m_rows.size()));
        for (std::uint64_t bits = m_occupied[word]; bits != 0; bits &= bits - 1) {
            m_rows.push_back(static_cast<int>(word) * kBits + std::countr_zero(bits));
        }
    }
    std::vector<int> sizes(m_rows.size(), 0);
    for (int column = 0; column < matrix.cols(); ++column) {
        for (const int row : storedEntries(matrix, column).indices) {
            ++sizes[rankOf(row)];
        }
    }
    std::vector<int> ends = startsOf(sizes);
    Eigen::SparseMatrix<double> transposed = matrixOf(matrix.cols(), ends);
    for (int column = 0; column < matrix.cols(); ++column) {
        const StoredEntries entries = storedEntries(matrix, column);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const int place = ends[rankOf(entries.indices[i])]++;
            transposed.innerIndexPtr()[place] = column;
            transposed.valuePtr()[place] = entries.values[i];
        }
    }
    m_entries.swap(transposed);
}

bool MatrixRows::isOccupied(int row) const
{
    return row >= 0 && row < m_rowCount && (m_occupied[wordOf(row)] & bitOf(row)) != 0;
}

std::size_t MatrixRows::rankOf(int row) const
{
    const std::size_t word = wordOf(row);
    return static_cast<std::size_t>(m_ranks[word]) +
           static_cast<std::size_t>(std::popcount(m_occupied[word] & (bitOf(row) - 1)));
}

StoredEntries MatrixRows::row(int row) const
{
    return isOccupied(row) ? storedEntries(m_entries, static_cast<Eigen::Index>(rankOf(row)))
                           : StoredEntries();
}

void MatrixRows::convolve(const Eigen::VectorXd& kernel)
{
    Eigen::SparseMatrix<double> convolved =
        EigenUtilities::applyKernelColumnWiseToMatrix(m_entries, kernel, true);
    m_entries.swap(convolved);
}

void MatrixRows::toColumns(Eigen::SparseMatrix<double>* matrix) const
{
    std::vector<int> sizes(static_cast<std::size_t>(m_entries.rows()), 0);
    for (Eigen::Index i = 0; i < m_entries.nonZeros(); ++i) {
        ++sizes[static_cast<std::size_t>(m_entries.innerIndexPtr()[i])];
    }
    std::vector<int> ends = startsOf(sizes);
    Eigen::SparseMatrix<double> columns = matrixOf(m_rowCount, ends);
    for (std::size_t rank = 0; rank < m_rows.size(); ++rank) {
        const StoredEntries entries = storedEntries(m_entries, static_cast<Eigen::Index>(rank));
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const int place = ends[static_cast<std::size_t>(entries.indices[i])]++;
            columns.innerIndexPtr()[place] = m_rows[rank];
            columns.valuePtr()[place] = entries.values[i];
        }
    }
    matrix->swap(columns);
}

} // namespace zel
