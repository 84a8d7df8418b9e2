#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/hills/HillLimits_p.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

namespace zel {

namespace {

/// A hill ends where the signal rises to more than this part of its apex.
constexpr double kHigherThanApex = 1.01;
/// The slope at a place is the sum of the steps from this many places below it to this many above.
/// That is the difference of the heights at both ends, which is how it is computed.
constexpr int kSlopeHalfWidth = 2;
/// The m/z window of an apex reaches this part of a Th to each side.
constexpr double kMzWindowsPerMz = 10.0;

/// Finds hills by place: the boxes of their limits, each listed in every tile that it touches.
class HillBoxes
{
public:
    bool containApexOf(const HillD2& hill) const
    {
        const auto found = m_tiles.find(key(tileOfMz(hill.mzApex), tileOfColumn(hill.d2ApexIndex)));
        return found != m_tiles.end() &&
               std::any_of(found->second.begin(), found->second.end(), [&hill](const Box& box) {
                   return box.columnLo <= hill.d2ApexIndex && hill.d2ApexIndex <= box.columnHi &&
                          box.mzLo <= hill.mzApex && hill.mzApex <= box.mzHi;
               });
    }

    void add(const HillD2& hill)
    {
        const Box box = {hill.mzLo, hill.mzHi, hill.d2LoIndex, hill.d2HiIndex};
        for (int mzTile = tileOfMz(hill.mzLo); mzTile <= tileOfMz(hill.mzHi); ++mzTile) {
            for (int columnTile = tileOfColumn(hill.d2LoIndex);
                 columnTile <= tileOfColumn(hill.d2HiIndex);
                 ++columnTile) {
                m_tiles[key(mzTile, columnTile)].push_back(box);
            }
        }
    }

private:
    struct Box
    {
        double mzLo;
        double mzHi;
        int columnLo;
        int columnHi;
    };

    /// Somewhat more than the size of a hill, so that most lie in one or two tiles.
    static constexpr double kTilesPerMz = 10.0;
    static constexpr int kColumnsPerTile = 256;

    static int tileOfMz(double mz) { return static_cast<int>(std::floor(mz * kTilesPerMz)); }
    static int tileOfColumn(int column) { return column / kColumnsPerTile; }
    static std::uint64_t key(int mzTile, int columnTile)
    {
        return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(mzTile)) << 32) |
               static_cast<std::uint32_t>(columnTile);
    }

    std::unordered_map<std::uint64_t, std::vector<Box>> m_tiles;
};

HillD2 hillAt(const EigenUtilities::MatrixApexIndex& apex,
              const Eigen::SparseMatrix<double>& matrix,
              const MatrixRows& rows,
              const HillSearchSettings& settings)
{
    const int halfWidth = static_cast<int>(std::lround(settings.mzHashFactor / kMzWindowsPerMz));
    const HillLimits mzLimits =
        findHillLimits(HillProfile(storedEntries(matrix, apex.column), apex.row),
                       apex.row,
                       settings.ratioMz,
                       apex.row - halfWidth,
                       2 * halfWidth);
    const HillProfile profile(rows.row(apex.row), apex.column);
    const HillLimits d2Limits =
        findHillLimits(profile, apex.column, settings.ratioD2, 0, static_cast<int>(matrix.cols()));
    HillD2 hill;
    hill.mzApex = FeatureFinderUtilities::unHashMz(apex.row, settings.mzHashFactor);
    hill.mzLo = FeatureFinderUtilities::unHashMz(mzLimits.low, settings.mzHashFactor);
    hill.mzHi = FeatureFinderUtilities::unHashMz(mzLimits.high, settings.mzHashFactor);
    hill.d1 = settings.d1;
    hill.d2ApexIndex = apex.column;
    hill.d2LoIndex = d2Limits.low;
    hill.d2HiIndex = d2Limits.high;
    hill.intensity = apex.value;
    hill.area = profile.sum(d2Limits.low, d2Limits.high);
    return hill;
}

} // namespace

HillProfile::HillProfile(const StoredEntries& entries, int apexIndex)
    : m_entries(entries)
    , m_apexIndex(apexIndex)
    , m_apexPosition(std::lower_bound(entries.indices.begin(), entries.indices.end(), apexIndex) -
                     entries.indices.begin())
{}

double HillProfile::at(int index) const
{
    // If all places from the apex to here were stored, this one would stand as far from the apex
    // among the entries; each that is missing brings it one nearer.
    const auto size = static_cast<std::ptrdiff_t>(m_entries.size());
    std::ptrdiff_t position =
        std::clamp<std::ptrdiff_t>(m_apexPosition + (index - m_apexIndex), 0, size - 1);
    const auto indexAt = [this](std::ptrdiff_t i) {
        return m_entries.indices[static_cast<std::size_t>(i)];
    };
    if (index >= m_apexIndex) {
        while (indexAt(position) > index) {
            --position;
        }
    } else {
        while (indexAt(position) < index) {
            ++position;
        }
    }
    return indexAt(position) == index ? m_entries.values[static_cast<std::size_t>(position)] : 0.0;
}

double HillProfile::sum(int first, int last) const
{
    double sum = 0.0;
    for (const double value : m_entries.between(first, last).values) {
        sum += value;
    }
    return sum;
}

HillLimits findHillLimits(const HillProfile& profile, int apex, double ratio, int first, int length)
{
    const double apexHeight = profile.at(apex);
    if (std::abs(apexHeight) <= kNegligible || length <= 1) {
        return {0, 0};
    }
    const int last = first + length - 1;
    const auto slope = [&](int i) {
        return profile.at(std::min(i + kSlopeHalfWidth + 1, last)) -
               profile.at(std::max(i - kSlopeHalfWidth, first));
    };
    const auto endsByHeight = [&](int i) {
        const double height = profile.at(i) / apexHeight;
        return height <= ratio || height > kHigherThanApex;
    };
    HillLimits limits = {first, last};
    for (int i = apex - 1; i >= first; --i) {
        if (endsByHeight(i) || slope(i) <= 0.0) {
            limits.low = i;
            break;
        }
    }
    for (int i = apex + 1; i < last; ++i) {
        if (endsByHeight(i) || slope(i) >= 0.0) {
            limits.high = i;
            break;
        }
    }
    return limits;
}

std::vector<HillD2> climbDown(const QList<EigenUtilities::MatrixApexIndex>& apexes,
                              qsizetype from,
                              qsizetype to,
                              const Eigen::SparseMatrix<double>& matrix,
                              const MatrixRows& rows,
                              const HillSearchSettings& settings)
{
    std::vector<HillD2> hills;
    hills.reserve(static_cast<std::size_t>(to - from));
    for (qsizetype i = from; i < to; ++i) {
        if (std::abs(apexes[i].value) > kNegligible) {
            hills.push_back(hillAt(apexes[i], matrix, rows, settings));
        }
    }
    return hills;
}

void removeHillsInsideEarlierOnes(std::vector<HillD2>* hills)
{
    HillBoxes kept;
    std::erase_if(*hills, [&kept](const HillD2& hill) {
        if (kept.containApexOf(hill)) {
            return true;
        }
        kept.add(hill);
        return false;
    });
}

} // namespace zel
