#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <unordered_set>

namespace zel {

namespace {

using MatrixApexIndex = EigenUtilities::MatrixApexIndex;

/// How a cell stands to its neighbours.
enum class Standing {
    BelowOne,   ///< at least one is higher
    EqualToOne, ///< none is higher, at least one is equal
    AboveAll,
};

Standing worse(Standing a, Standing b)
{
    return std::min(a, b);
}

Standing standing(double value, double neighbour)
{
    if (neighbour > value) {
        return Standing::BelowOne;
    }
    return neighbour == value ? Standing::EqualToOne : Standing::AboveAll;
}

/// Walks down a column beside that of the cells, in step with them.
class SideColumn
{
public:
    explicit SideColumn(const StoredEntries& entries)
        : m_entries(entries)
    {}

    /// How `value` at `row` stands to the three cells of this column around `row`. Rows ascend from
    /// call to call.
    Standing standingOf(double value, int row)
    {
        constexpr std::size_t stride = 16; // first in strides, then step by step
        while (m_next + stride < m_entries.size() && m_entries.indices[m_next + stride] < row) {
            m_next += stride;
        }
        while (m_next < m_entries.size() && m_entries.indices[m_next] < row - 1) {
            ++m_next;
        }
        Standing result = Standing::AboveAll;
        for (std::size_t i = m_next; i < m_entries.size() && m_entries.indices[i] <= row + 1; ++i) {
            result = worse(result, standing(value, m_entries.values[i]));
        }
        return result;
    }

private:
    StoredEntries m_entries;
    std::size_t m_next = 0;
};

/// How entry `i` stands to the cells above and below it in its own column.
Standing standingInColumn(const StoredEntries& column, std::size_t i)
{
    const int row = column.indices[i];
    Standing result = Standing::AboveAll;
    if (i > 0 && column.indices[i - 1] == row - 1) {
        result = worse(result, standing(column.values[i], column.values[i - 1]));
    }
    if (i + 1 < column.size() && column.indices[i + 1] == row + 1) {
        result = worse(result, standing(column.values[i], column.values[i + 1]));
    }
    return result;
}

/// Tells which plateaus are local maxima, by filling each of them once.
class PlateauFinder
{
public:
    explicit PlateauFinder(const Eigen::SparseMatrix<double>& m)
        : m_matrix(m)
    {}

    /// True when the cell belongs to a plateau without a higher neighbour and is the first of its
    /// cells that was asked about.
    bool isNewMaximum(int row, int column, double value)
    {
        if (!visit(row, column)) {
            return false;
        }
        bool isMaximum = true;
        m_open.push_back({row, column, value});
        while (!m_open.empty()) {
            const MatrixApexIndex cell = m_open.back();
            m_open.pop_back();
            isMaximum = visitNeighbours(cell) && isMaximum;
        }
        return isMaximum;
    }

private:
    /// Opens the neighbours that belong to the plateau; false when one is higher.
    bool visitNeighbours(const MatrixApexIndex& cell)
    {
        bool noneHigher = true;
        const int lastColumn =
            static_cast<int>(std::min<Eigen::Index>(cell.column + 1LL, m_matrix.cols() - 1));
        for (int column = std::max(cell.column - 1, 0); column <= lastColumn; ++column) {
            const StoredEntries around = neighbourRows(column, cell.row);
            for (std::size_t i = 0; i < around.size(); ++i) {
                const Standing is = standing(cell.value, around.values[i]);
                noneHigher = noneHigher && is != Standing::BelowOne;
                if (is == Standing::EqualToOne && visit(around.indices[i], column)) {
                    m_open.push_back({around.indices[i], column, cell.value});
                }
            }
        }
        return noneHigher;
    }

    StoredEntries neighbourRows(int column, int row) const
    {
        const auto lastRow = std::min<Eigen::Index>(row + 1LL, m_matrix.rows() - 1);
        return storedEntries(m_matrix, column).between(row - 1, static_cast<int>(lastRow));
    }

    /// Marks the cell; false when it was marked before.
    bool visit(int row, int column)
    {
        return m_visited.insert(static_cast<long long>(column) * m_matrix.rows() + row).second;
    }

    const Eigen::SparseMatrix<double>& m_matrix;
    std::unordered_set<long long> m_visited;
    std::vector<MatrixApexIndex> m_open;
};

/// Both hold; without a branch to mispredict, which && would be.
bool both(bool a, bool b)
{
    return (static_cast<int>(a) & static_cast<int>(b)) != 0;
}

/// The places among the entries of a column of those above zero that have no higher neighbour in
/// the column. Only these few, of a smooth signal, are worth a look at the columns beside it.
void findCandidates(const StoredEntries& column, std::vector<std::size_t>& candidates)
{
    candidates.resize(column.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < column.size(); ++i) {
        const double value = column.values[i];
        const int row = column.indices[i];
        const std::size_t before = i - (i > 0 ? 1 : 0);
        const std::size_t next = i + (i + 1 < column.size() ? 1 : 0);
        const bool isBelow = both(column.values[before] > value, column.indices[before] == row - 1);
        const bool isAbove = both(column.values[next] > value, column.indices[next] == row + 1);
        // Written always and kept or not: no branch to mispredict.
        candidates[count] = i;
        count += both(value > kNegligible, both(!isBelow, !isAbove)) ? 1 : 0;
    }
    candidates.resize(count);
}

StoredEntries columnOrNothing(const Eigen::SparseMatrix<double>& m, Eigen::Index column)
{
    return column >= 0 && column < m.cols() ? storedEntries(m, column) : StoredEntries();
}

} // namespace

QList<MatrixApexIndex> EigenUtilities::findSparseMatrixApexes(const Eigen::SparseMatrix<double>& m)
{
    QList<MatrixApexIndex> apexes;
    PlateauFinder plateaus(m);
    std::vector<std::size_t> candidates;
    for (int column = 0; column < m.cols(); ++column) {
        const StoredEntries entries = storedEntries(m, column);
        SideColumn left(columnOrNothing(m, column - 1LL));
        SideColumn right(columnOrNothing(m, column + 1LL));
        findCandidates(entries, candidates);
        for (const std::size_t i : candidates) {
            const double value = entries.values[i];
            const int row = entries.indices[i];
            Standing is = worse(standingInColumn(entries, i), left.standingOf(value, row));
            if (is != Standing::BelowOne) {
                is = worse(is, right.standingOf(value, row));
            }
            if (is == Standing::AboveAll ||
                (is == Standing::EqualToOne && plateaus.isNewMaximum(row, column, value))) {
                apexes.append({row, column, value});
            }
        }
    }
    return apexes;
}

} // namespace zel
