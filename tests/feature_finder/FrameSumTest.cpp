#include "feature_finder/frames/FrameSum_p.h"
#include "tests/support/SparseMatrices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

namespace zel::test {

namespace {

using Matrix = FrameSum::Matrix;

/// What FrameSum::strongestCells says, by sorting all cells of the sum.
Matrix strongestByDefinition(const std::deque<Matrix>& frames,
                             double noiseFloor,
                             std::size_t maxCount)
{
    Matrix sum = frames.front();
    for (auto frame = frames.begin() + 1; frame != frames.end(); ++frame) {
        sum += *frame;
    }
    std::vector<double> values(sum.valuePtr(), sum.valuePtr() + sum.nonZeros());
    std::sort(values.rbegin(), values.rend());
    const std::size_t half = values.size() / 2;
    const double median =
        values.size() % 2 == 1 ? values[half] : 0.5 * (values[half - 1] + values[half]);
    sum.prune([&](auto, auto, double value) { return value > noiseFloor * median; });
    if (static_cast<std::size_t>(sum.nonZeros()) > maxCount) {
        sum.prune([&](auto, auto, double value) { return value > values[maxCount]; });
    }
    return sum;
}

} // namespace

TEST(FrameSumTest, TheStrongestCellsEqualTheDefinitionAtEachStep)
{
    for (const int greatestValue : {3, 1000}) { // small: most cells are equal to others
        for (const double noiseFloor : {0.0, 0.5, 1.0, 3.0}) {
            for (const std::size_t maxCount : {20U, 400U, 100000U}) {
                FrameSum sum;
                sum.reset(80, 12);
                std::deque<Matrix> frames;
                for (unsigned step = 0; step < 60; ++step) {
                    // Every ten steps the frames turn from full and strong to empty and weak.
                    const bool isFull = step / 10 % 2 == 0;
                    Matrix frame = randomSparseMatrix(
                        80, 12, isFull ? 900 : 40, isFull ? greatestValue : 2, step);
                    frames.push_back(frame);
                    if (frames.size() <= 4) {
                        sum.append(&frame);
                    } else {
                        sum.slide(&frame);
                        frames.pop_front();
                    }
                    Matrix cells;
                    sum.strongestCells(noiseFloor, maxCount, &cells);
                    const Matrix expected = strongestByDefinition(frames, noiseFloor, maxCount);
                    ASSERT_EQ(cells.nonZeros(), expected.nonZeros())
                        << "step " << step << ", noise " << noiseFloor << ", at most " << maxCount;
                    ASSERT_EQ(Eigen::MatrixXd(cells), Eigen::MatrixXd(expected));
                }
            }
        }
    }
}

} // namespace zel::test
