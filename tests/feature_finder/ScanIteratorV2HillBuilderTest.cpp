#include "feature_finder/hills/ScanIteratorV2HillBuilder.h"

#include "tests/support/Matchers.h"
#include "tests/support/SparseMatrices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace zel::test {

namespace {

using Matrix = ScanIteratorV2HillBuilder::Matrix;
using ::testing::ElementsAreArray;

constexpr double kBinsPerMz = 50.0; // so that the m/z window is 5 bins to each side

SettableFeatureFinderParameters paramsOf(int minLength, int mzPasses = 0)
{
    SettableFeatureFinderParameters params;
    params.mzHashFactor = kBinsPerMz;
    params.mzSmoothingPasses = mzPasses;
    params.d2SmoothingPasses = 0;
    params.minHillLengthD1 = minLength;
    params.minHillLengthD2 = minLength;
    params.hillLimitRatioMz = 0.3;
    params.hillLimitRatioD2 = 0.2;
    return params;
}

ScanIteratorV2HillBuilder builderOf(const SettableFeatureFinderParameters& params)
{
    ScanIteratorV2HillBuilder builder;
    EXPECT_THAT(builder.init(params), IsOk());
    return builder;
}

auto fieldsOf(const HillD2& hill)
{
    return std::tuple(hill.mzLo,
                      hill.mzHi,
                      hill.mzApex,
                      hill.d1,
                      hill.d2ApexIndex,
                      hill.d2LoIndex,
                      hill.d2HiIndex,
                      hill.intensity,
                      hill.area);
}
using Fields = decltype(fieldsOf(HillD2()));

std::vector<Fields> fieldsOf(const QList<HillD2>& hills)
{
    std::vector<Fields> fields;
    for (const HillD2& hill : hills) {
        fields.push_back(fieldsOf(hill));
    }
    return fields;
}

/// The limit search as it is told, on a dense vector of whole numbers and with a slope that is
/// summed step by step.
std::pair<int, int> limitsByDefinition(const std::vector<double>& v, int p, double ratio)
{
    const int n = static_cast<int>(v.size());
    const auto slope = [&](int i) {
        double sum = 0.0;
        for (int step = std::max(i - 2, 0); step <= std::min(i + 2, n - 2); ++step) {
            sum += v[std::size_t(step) + 1] - v[std::size_t(step)];
        }
        return sum;
    };
    const auto ends = [&](int i) {
        const double norm = v[std::size_t(i)] / v[std::size_t(p)];
        return norm <= ratio || norm > 1.01;
    };
    int left = 0;
    int right = 0;
    bool goesLeft = n > 1;
    bool goesRight = n > 1;
    for (int k = 1; k < n && (goesLeft || goesRight); ++k) {
        if (goesLeft && p - k >= 0) {
            left = p - k;
            goesLeft = !(ends(left) || slope(left) <= 0.0);
        }
        if (goesRight && p + k >= n - 1) {
            right = n - 1;
            goesRight = false;
        } else if (goesRight) {
            right = p + k;
            goesRight = !(ends(right) || slope(right) >= 0.0);
        }
    }
    return {left, right};
}

QList<HillD2> hillsByDefinition(const Matrix& matrix,
                                const SettableFeatureFinderParameters& params,
                                int d1)
{
    auto apexes = EigenUtilities::findSparseMatrixApexes(matrix);
    std::stable_sort(apexes.begin(), apexes.end(), [](const auto& a, const auto& b) {
        return a.value > b.value;
    });
    const Eigen::MatrixXd dense(matrix);
    const int half = static_cast<int>(std::lround(params.mzHashFactor / 10.0));
    QList<HillD2> hills;
    for (const auto& apex : apexes) {
        std::vector<double> window(2 * std::size_t(half), 0.0);
        for (int i = 0; i < 2 * half; ++i) {
            const int row = apex.row - half + i;
            if (row >= 0 && row < dense.rows()) {
                window[std::size_t(i)] = dense(row, apex.column);
            }
        }
        std::vector<double> profile;
        for (int column = 0; column < dense.cols(); ++column) {
            profile.push_back(dense(apex.row, column));
        }
        const auto mz = limitsByDefinition(window, half, params.hillLimitRatioMz);
        const auto d2 = limitsByDefinition(profile, apex.column, params.hillLimitRatioD2);
        HillD2 hill;
        hill.mzLo = (mz.first + apex.row - half) / params.mzHashFactor;
        hill.mzHi = (mz.second + apex.row - half) / params.mzHashFactor;
        hill.mzApex = apex.row / params.mzHashFactor;
        hill.d1 = d1;
        hill.d2ApexIndex = apex.column;
        std::tie(hill.d2LoIndex, hill.d2HiIndex) = d2;
        hill.intensity = apex.value;
        hill.area = dense.row(apex.row).segment(d2.first, d2.second - d2.first + 1).sum();
        const bool isInside = std::any_of(hills.begin(), hills.end(), [&hill](const HillD2& h) {
            return h.d2LoIndex <= hill.d2ApexIndex && hill.d2ApexIndex <= h.d2HiIndex &&
                   h.mzLo <= hill.mzApex && hill.mzApex <= h.mzHi;
        });
        if (!isInside) {
            hills.append(hill);
        }
    }
    hills.removeIf([&params](const HillD2& hill) {
        return hill.d2HiIndex - hill.d2LoIndex < params.minHillLengthD2 - 1;
    });
    return hills;
}

} // namespace

TEST(ScanIteratorV2HillBuilderTest, HillsEqualTheDefinition)
{
    for (const int columns : {1, 2, 40}) {
        for (const int greatestValue : {3, 20, 1000}) { // small: many equal heights
            for (const int entryCount : {10, 300, 3000}) {
                const Matrix matrix = randomSparseMatrix(80, columns, entryCount, greatestValue, 5);
                for (const int minLength : {0, 4}) {
                    const auto params = paramsOf(minLength);
                    EXPECT_EQ(fieldsOf(valueOf(builderOf(params).buildHills(matrix, 7))),
                              fieldsOf(hillsByDefinition(matrix, params, 7)))
                        << columns << " columns, " << entryCount << " entries up to "
                        << greatestValue;
                }
            }
        }
    }
}

TEST(ScanIteratorV2HillBuilderTest, SmoothsARunAlongMzInPlace)
{
    Matrix run(1000, 30);
    run.insert(500, 10) = 2.0;
    auto params = paramsOf(1, 1);
    const auto builder = builderOf(params);
    const QList<HillD1> hills = valueOf(builder.buildHills(&run));
    EXPECT_EQ(run.nonZeros(), params.mzKernelWidth);
    EXPECT_EQ(run.col(10).nonZeros(), params.mzKernelWidth);
    ASSERT_EQ(hills.size(), 1);
    EXPECT_EQ(hills[0].d1LoIndex, 9);
    EXPECT_EQ(hills[0].d1HiIndex, 11); // a lone column: width 2
    EXPECT_EQ(hills[0].intensity, run.coeff(500, 10));
    params.minHillLengthD1 = 4;
    EXPECT_TRUE(valueOf(builderOf(params).buildHills(&run)).isEmpty());

    // Across columns it goes in the other step.
    params.mzSmoothingPasses = 0;
    params.d2SmoothingPasses = 2;
    Matrix other(1000, 30);
    other.insert(500, 15) = 1.0;
    EXPECT_EQ(valueOf(builderOf(params).buildHills(&other)).size(), 1);
    EXPECT_EQ(other.nonZeros(), 2 * params.d2KernelWidth - 1);
    EXPECT_NEAR(other.sum(), 1.0, 1e-12);
}

TEST(ScanIteratorV2HillBuilderTest, TheNumberOfThreadsChangesNothing)
{
    const Matrix matrix = randomSparseMatrix(200000, 300, 45000, 100000, 9);
    const auto builder = builderOf(paramsOf(1));
    std::vector<std::vector<Fields>> results;
    for (const char* const threads : {"1", "2", "3", "0"}) {
        qputenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY", threads);
        results.push_back(fieldsOf(valueOf(builder.buildHills(matrix, 1))));
    }
    qunsetenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY");
    EXPECT_GT(results[0].size(), 40000U);
    for (const auto& result : results) {
        EXPECT_TRUE(result == results[0]);
    }
}

TEST(ScanIteratorV2HillBuilderTest, RefusesWrongUseAndTakesNothing)
{
    ScanIteratorV2HillBuilder builder;
    Matrix empty(1000, 30);
    auto params = paramsOf(1);
    EXPECT_THAT(builder.buildHills(empty, 1), HasError(kError)) << "not initialised";
    ASSERT_THAT(builder.init(params), IsOk());
    EXPECT_TRUE(valueOf(builder.buildHills(empty, 1)).isEmpty());
    EXPECT_TRUE(valueOf(builder.buildHills(&empty)).isEmpty());
    EXPECT_THAT(builder.buildHills(nullptr), HasError(kError));
    for (const int width : {2, INT_MAX}) {
        params.mzKernelWidth = width;
        EXPECT_THAT(builder.init(params), HasError(kError));
        EXPECT_FALSE(builder.isInit()) << "with kernels and settings that do not belong together";
    }
}

} // namespace zel::test
