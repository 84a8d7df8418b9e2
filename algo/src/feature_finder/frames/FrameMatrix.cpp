#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/frames/FrameMatrix_p.h"

#include <algorithm>
#include <cmath>

namespace zel {

void binScan(const QList<QPointF>& points, double binsPerMz, Eigen::Index rowCount, BinnedScan* out)
{
    out->rows.clear();
    out->values.clear();
    const auto rowEnd = static_cast<double>(rowCount);
    for (const QPointF& point : points) {
        const double product = static_cast<double>(static_cast<float>(point.x())) * binsPerMz;
        const double intensity = static_cast<float>(point.y());
        if (!(std::abs(intensity) > kNegligible) || !std::isfinite(intensity) ||
            !(product > -1.0 && product < rowEnd)) {
            continue;
        }
        const int row = static_cast<int>(product);
        if (out->rows.empty() || out->rows.back() != row) {
            out->rows.push_back(row);
            out->values.push_back(intensity);
        } else {
            out->values.back() = intensity;
        }
    }
}

FrameColumns::FrameColumns(Eigen::Index rows, Eigen::Index columns)
    : m_rowCount(rows)
    , m_ends(static_cast<std::size_t>(columns), 0)
{}

void FrameColumns::append(int column, const BinnedScan& scan)
{
    if (column == m_lastColumn) {
        m_rows.resize(m_lastStart);
        m_values.resize(m_lastStart);
    }
    m_lastColumn = column;
    m_lastStart = m_rows.size();
    m_rows.insert(m_rows.end(), scan.rows.begin(), scan.rows.end());
    m_values.insert(m_values.end(), scan.values.begin(), scan.values.end());
    m_ends[static_cast<std::size_t>(column)] = static_cast<int>(m_rows.size());
}

void FrameColumns::finish(Eigen::SparseMatrix<double>* matrix)
{
    Eigen::SparseMatrix<double> filled(m_rowCount, static_cast<Eigen::Index>(m_ends.size()));
    allocateEntries(&filled, static_cast<Eigen::Index>(m_rows.size()));
    std::copy(m_rows.begin(), m_rows.end(), filled.innerIndexPtr());
    std::copy(m_values.begin(), m_values.end(), filled.valuePtr());
    int end = 0;
    for (std::size_t column = 0; column < m_ends.size(); ++column) {
        end = std::max(end, m_ends[column]);
        filled.outerIndexPtr()[column + 1] = end;
    }
    matrix->swap(filled);
}

} // namespace zel
