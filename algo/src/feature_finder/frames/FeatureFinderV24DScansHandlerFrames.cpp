#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"
#include "feature_finder/frames/FrameMatrix_p.h"
#include "feature_finder/records/CsvFile_p.h"

#include <QTextStream>

#include <algorithm>
#include <limits>
#include <vector>

// The conversions between a frame, its matrix and a CSV file.

namespace zel {

namespace {

using Frame = FeatureFinderV24DScansHandler::Frame;
using Matrix = FeatureFinderV24DScansHandler::Matrix;

/// Room that frameToFrameRaw leaves beyond the last row and column.
constexpr int kMargin = 10;

/// The greatest x of all points; 0 when there is none.
double greatestMz(const Frame& frame)
{
    double greatest = 0.0;
    for (const QList<QPointF>& points : frame) {
        for (const QPointF& point : points) {
            greatest = std::max(greatest, point.x());
        }
    }
    return greatest;
}

Error checkFactor(int factor)
{
    return ErrorUtils::aboveThreshold<int>(
        factor,
        0,
        ErrorUtilsParam::Exclusive,
        Error(kError, QStringLiteral("A hash factor must be positive, but is %1").arg(factor)));
}

} // namespace

Result<Matrix> FeatureFinderV24DScansHandler::frameToFrameRaw(const Frame& frame,
                                                              int mzHashFactor,
                                                              int d2HashFactor)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkFactor(mzHashFactor));
    ZEL_RETURN_IF_ERROR(checkFactor(d2HashFactor));
    const long long rows =
        FeatureFinderUtilities::hashMz(greatestMz(frame), mzHashFactor) + 1LL * kMargin;
    const int lastColumn = frame.isEmpty() ? 0 : columnOfD2(frame.lastKey(), d2HashFactor);
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        rows <= std::numeric_limits<int>::max() && lastColumn <= kMaxFrameColumnCount,
        true,
        Error(kError, "The frame is too large for a matrix")));
    Matrix raw(rows, std::max(lastColumn, 0) + kMargin);
    std::vector<Eigen::Triplet<double>> entries;
    for (auto d2 = frame.cbegin(); d2 != frame.cend(); ++d2) {
        const int column = columnOfD2(d2.key(), d2HashFactor);
        for (const QPointF& point : d2.value()) {
            const int row = FeatureFinderUtilities::hashMz(point.x(), mzHashFactor);
            if (row >= 0 && column >= 0) {
                entries.emplace_back(row, column, point.y());
            }
        }
    }
    raw.setFromTriplets(entries.begin(), entries.end());
    return raw;
}

Result<Frame> FeatureFinderV24DScansHandler::frameRawToFrame(const Matrix& raw,
                                                             int mzHashFactor,
                                                             int d2HashFactor)
{
    Error e;
    constexpr double lowestIntensity = 1.0;
    ZEL_RETURN_IF_ERROR(checkFactor(mzHashFactor));
    Frame frame;
    for (int column = 0; column < raw.cols(); ++column) {
        const StoredEntries entries = storedEntries(raw, column);
        QList<QPointF> points;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries.values[i] >= lowestIntensity) {
                points.append({FeatureFinderUtilities::unHashMz(entries.indices[i], mzHashFactor),
                               entries.values[i]});
            }
        }
        if (!points.isEmpty()) {
            frame[FeatureFinderUtilities::hashMz(column, d2HashFactor)] += points;
        }
    }
    return frame;
}

void FeatureFinderV24DScansHandler::writeFrameToCSV(const Frame& frame, const QString& path)
{
    writeCsvFile(path, [&frame](QTextStream& stream) {
        stream << "d2,mz,intensity\n";
        for (auto d2 = frame.cbegin(); d2 != frame.cend(); ++d2) {
            for (const QPointF& point : d2.value()) {
                stream
                    << QStringLiteral("%1, %2, %3\n").arg(d2.key()).arg(point.x()).arg(point.y());
            }
        }
    });
}

} // namespace zel
