#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/clusters/ClusterFrame_p.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

namespace zel {

namespace {

/// Columns of a matrix of hills after the one of the last apex.
constexpr int kSpareColumns = 20;

bool isPoint(double value)
{
    return std::abs(value) > kNegligible;
}

/// The sum of the columns; sums that count as zero are left out.
Eigen::SparseVector<double> sumOfColumns(const Eigen::SparseMatrix<double>& matrix)
{
    std::vector<std::pair<int, double>> entries;
    entries.reserve(static_cast<std::size_t>(matrix.nonZeros()));
    for (Eigen::Index column = 0; column < matrix.cols(); ++column) {
        const StoredEntries stored = storedEntries(matrix, column);
        for (std::size_t i = 0; i < stored.size(); ++i) {
            entries.emplace_back(stored.indices[i], stored.values[i]);
        }
    }
    std::ranges::stable_sort(entries, {}, &std::pair<int, double>::first);
    Eigen::SparseVector<double> sum(matrix.rows());
    for (std::size_t i = 0; i < entries.size();) {
        const int row = entries[i].first;
        double value = 0.0;
        for (; i < entries.size() && entries[i].first == row; ++i) {
            value += entries[i].second;
        }
        if (isPoint(value)) {
            sum.insertBack(row) = value;
        }
    }
    return sum;
}

/// The numbers of the points, ordered by column and row, in one cell by number.
std::vector<int> byPlace(std::span<const HillPoint> points)
{
    std::vector<int> order(points.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, {}, [&points](int i) {
        const HillPoint& point = points[static_cast<std::size_t>(i)];
        return std::pair(point.column, point.row);
    });
    return order;
}

} // namespace

void buildHillMatrices(std::span<const HillPoint> points,
                       Eigen::SparseMatrix<double, 0, int>* frameRaw,
                       Eigen::SparseMatrix<int, 0, int>* hillIndex)
{
    const std::vector<int> order = byPlace(points);
    const int lastColumn =
        order.empty() ? 0 : points[static_cast<std::size_t>(order.back())].column;
    const int rowCount = SpectraSubtractomatic::clusterRows();
    const auto pointCount = static_cast<Eigen::Index>(points.size());
    frameRaw->resize(rowCount, lastColumn + kSpareColumns);
    hillIndex->resize(rowCount, lastColumn + kSpareColumns);
    frameRaw->reserve(pointCount);
    hillIndex->reserve(pointCount);

    std::size_t next = 0;
    for (int column = 0; column < frameRaw->cols(); ++column) {
        frameRaw->startVec(column);
        hillIndex->startVec(column);
        int lastRow = -1;
        for (; next < order.size(); ++next) {
            const HillPoint& point = points[static_cast<std::size_t>(order[next])];
            if (point.column != column) {
                break;
            }
            if (point.row != lastRow) {
                frameRaw->insertBack(point.row, column) = 0.0;
                hillIndex->insertBack(point.row, column) = 0;
                lastRow = point.row;
            }
            frameRaw->data().value(frameRaw->data().size() - 1) += point.intensity;
            hillIndex->data().value(hillIndex->data().size() - 1) = order[next];
        }
    }
    frameRaw->finalize();
    hillIndex->finalize();
}

int countPoints(const Eigen::SparseMatrix<double, 0, int>& frameRaw)
{
    return static_cast<int>(
        std::count_if(frameRaw.valuePtr(), frameRaw.valuePtr() + frameRaw.nonZeros(), isPoint));
}

ClusterFrame::ClusterFrame(Eigen::SparseMatrix<double, 0, int>* frameRaw, int halfWidthColumns)
    : m_frameRaw(frameRaw)
    // Wider than the matrix is no wider: nothing lies there.
    , m_halfWidthColumns(
          static_cast<int>(std::min<Eigen::Index>(halfWidthColumns, frameRaw->cols())))
{
    m_pointCount = countPoints(*frameRaw);
    std::vector<Candidate> candidates;
    candidates.reserve(static_cast<std::size_t>(frameRaw->nonZeros()));
    for (int column = 0; column < frameRaw->cols(); ++column) {
        for (int entry = frameRaw->outerIndexPtr()[column];
             entry < frameRaw->outerIndexPtr()[column + 1];
             ++entry) {
            const double value = frameRaw->valuePtr()[entry];
            m_mayHoldNegatives = m_mayHoldNegatives || value < 0.0;
            if (value > kNegligible) {
                candidates.push_back({value, column, frameRaw->innerIndexPtr()[entry], entry});
            }
        }
    }
    m_candidates = std::priority_queue<Candidate>(std::less<Candidate>(), std::move(candidates));
}

std::optional<ClusterFrame::Point> ClusterFrame::strongestPoint()
{
    while (!m_candidates.empty()) {
        Candidate strongest = m_candidates.top();
        const double value = m_frameRaw->valuePtr()[strongest.entry];
        if (value == strongest.value) {
            return Point{strongest.row, strongest.column};
        }
        m_candidates.pop();
        if (value > kNegligible) {
            strongest.value = value;
            m_candidates.push(strongest);
        }
    }
    return std::nullopt;
}

Error ClusterFrame::profileAt(const Point& point,
                              Eigen::SparseVector<double, 0, int>* profile) const
{
    Error e;
    Eigen::SparseMatrix<double> slice;
    ZEL_RETURN_IF_ERROR(
        FeatureFinderUtilities::sliceFrame(*m_frameRaw,
                                           point.row,
                                           point.column,
                                           g_immutableFeatureFinderParameters.clusterSliceHalfWidth,
                                           m_halfWidthColumns,
                                           &slice));
    *profile = sumOfColumns(slice);
    return kNoError;
}

void ClusterFrame::subtract(const Eigen::SparseMatrix<double, 0, int>& model, const Point& point)
{
    dropNegativeValues();
    const auto firstColumn = static_cast<int>(point.column - model.cols() / 2);
    for (int modelColumn = 0; modelColumn < model.cols(); ++modelColumn) {
        const int column = firstColumn + modelColumn;
        if (column < 0 || column >= m_frameRaw->cols()) {
            continue;
        }
        const StoredEntries wanted = storedEntries(model, modelColumn);
        const int* const rows = m_frameRaw->innerIndexPtr();
        const int* row = rows + m_frameRaw->outerIndexPtr()[column];
        const int* const end = rows + m_frameRaw->outerIndexPtr()[column + 1];
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            row = std::lower_bound(row, end, wanted.indices[i]);
            if (row != end && *row == wanted.indices[i]) {
                const auto entry = static_cast<int>(row - rows);
                setValue(entry, m_frameRaw->valuePtr()[entry] - wanted.values[i]);
            }
        }
    }
}

void ClusterFrame::remove(const Point& point)
{
    const int* const rows = m_frameRaw->innerIndexPtr();
    const int* const end = rows + m_frameRaw->outerIndexPtr()[point.column + 1];
    const int* const row =
        std::lower_bound(rows + m_frameRaw->outerIndexPtr()[point.column], end, point.row);
    if (row != end && *row == point.row) {
        setValue(static_cast<int>(row - rows), 0.0);
    }
}

void ClusterFrame::setValue(int entry, double value)
{
    double& stored = m_frameRaw->valuePtr()[entry];
    m_pointCount -= isPoint(stored) ? 1 : 0;
    stored = value > 0.0 ? value : 0.0;
    m_pointCount += isPoint(stored) ? 1 : 0;
}

void ClusterFrame::dropNegativeValues()
{
    for (int entry = 0; m_mayHoldNegatives && entry < m_frameRaw->nonZeros(); ++entry) {
        setValue(entry, m_frameRaw->valuePtr()[entry]);
    }
    m_mayHoldNegatives = false;
}

} // namespace zel
