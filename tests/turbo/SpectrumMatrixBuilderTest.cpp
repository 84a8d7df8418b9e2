#include "tests/turbo/TurboReference.h"
#include "turbo/index/SpectrumMatrixBuilder_p.h"

#include <gtest/gtest.h>

namespace zel {

TEST(SpectrumMatrixBuilderTest, StoresPeaksInWhateverOrderAndHoweverLittleIsReserved)
{
    constexpr unsigned seed = 61;
    constexpr TurboXicSettings settings{.granularity = 1000, .maxIonCount = 1000};
    for (const int reserved : {-1, 0, 3, 1000}) {
        std::mt19937 random(seed);
        SpectrumMatrixBuilder builder(400400, 50, settings.granularity, reserved);
        std::map<int, std::map<int, double>> wanted; // by column, by row
        std::size_t wantedCount = 0;
        for (int column = 0; column < 40; column += 1 + column % 3) {
            QList<QPointF> peaks = test::randomPeaks(random, 10 + column, 400.0, 400.5);
            if (column % 2 == 0) {
                std::shuffle(peaks.begin(), peaks.end(), random);
            }
            builder.skipToColumn(column);
            ASSERT_TRUE(builder.appendColumn(peaks));
            wanted[column] = test::indexedPeaks(peaks, settings);
            wanted[column].erase(wanted[column].lower_bound(400400), wanted[column].end());
            wantedCount += wanted[column].size();
        }
        Eigen::SparseMatrix<double> matrix;
        builder.finish(&matrix);
        ASSERT_TRUE(matrix.isCompressed());
        ASSERT_EQ(matrix.cols(), 50);
        ASSERT_EQ(static_cast<std::size_t>(matrix.nonZeros()), wantedCount);
        ASSERT_LE(static_cast<std::size_t>(matrix.data().allocatedSize()), wantedCount * 17 / 16)
            << "room that was not used is kept";
        for (int column = 0; column < matrix.cols(); ++column) {
            std::map<int, double> stored;
            for (Eigen::SparseMatrix<double>::InnerIterator entry(matrix, column); entry; ++entry) {
                stored[static_cast<int>(entry.row())] = entry.value();
            }
            ASSERT_EQ(stored, wanted[column])
                << "seed " << seed << ", reserved " << reserved << ", column " << column;
        }
    }
}

} // namespace zel
