#pragma once

#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/Interval.h"
#include "common/ms_types/MsScanId.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <Eigen/SparseCore>
#include <QList>
#include <QMap>
#include <QPointF>
#include <QSharedDataPointer>

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader
class FrameSum;

/// Turns the mobility scans of a source into sparse matrices, each the sum of `numberOfFramesToSum`
/// consecutive frames.
///
/// A frame is the scans of one D1, as (m/z, intensity) points by D2. A raw frame is its matrix: m/z
/// bins in rows, D2 in columns, `d2HashFactor` mobility scans to a column. The window moves on by
/// one frame at a time: each frame is read once, added to the sum, and taken away again, and that
/// costs the entries of this frame, whatever the length of the window.
///
/// Call `init`, then the setters if need be, then `getFrameRaw` for one entry of `allD1s()` after
/// the other. The source is borrowed. A copy is deep. Serves one thread at a time.
class ZEL_EXPORT FeatureFinderV24DScansHandler
{
public:
    using Frame = QMap<int, QList<QPointF>>;
    using Matrix = Eigen::SparseMatrix<double, 0, int>;

    FeatureFinderV24DScansHandler();
    FeatureFinderV24DScansHandler(const FeatureFinderV24DScansHandler&);
    FeatureFinderV24DScansHandler& operator=(const FeatureFinderV24DScansHandler&);
    ~FeatureFinderV24DScansHandler();

    /// Looks through the scans of a source. `numberOfFramesToSum` 0 becomes their number, and the
    /// one matrix of the run may then have ten million entries instead of 15,000.
    /// \return kError for a null source, one without mobility, one without a D2 above 0, for a grid
    ///         that has fewer than two columns or more than a million, or no row; or the failure of
    ///         the source
    Error init(msreader::MsDataSourceInterface* source, SettableFeatureFinderParameters params);

    /// The sum of the frames from `d1` on. The first call fills the window. Each further one moves
    /// it on by one frame, for which `d1` must be the next one: it takes away the oldest frame and
    /// adds the one that belongs to the end of the window at `d1`, whatever the window held.
    ///
    /// Cells whose sum is not positive are not stored. With `relativeFrameNoiseFloor`, only those
    /// above this multiple of the median are; of more than 15,000 those above the intensity of
    /// rank 15,000, so that equal ones at the limit all go.
    ///
    /// In a frame, a point lies in the bin to which m/z * mzHashFactor is cut, of which the middle
    /// is half a bin above the m/z that the bin stands for: masses come out half a bin low on
    /// average. Values are in single precision. Of several points of a scan in one bin, and of
    /// several scans in one column, the last counts.
    /// \return kError for a D1 that the source does not have, or that has no full window; the
    ///         window is then to be cleared. A scan that cannot be read is left out with a warning
    ///         in the log.
    Result<Matrix> getFrameRaw(int d1);

    /// The frame numbers at which a window starts, ascending: all but the last
    /// `numberOfFramesToSum`, at least one. A window that starts at the first of those left out
    /// would be full as well, but is not visited.
    QList<int> allD1s() const;

    /// The largest D2 that enters a matrix; -1 before `init`.
    int maxD2() const { return m_maxD2; }
    int numberOfFramesToSum() const { return m_params.numberOfFramesToSum; }
    QMap<int, double> d1RetentionTimes() const { return m_d1RetentionTimes; }
    /// 0 for an unknown frame.
    double getRetentionTimeMinutes(int d1) const { return m_d1RetentionTimes.value(d1, 0.0); }
    /// As the source reports them.
    math::Range<long long> d1Range() const { return m_d1Range; }
    math::Range<long long> d2Range() const { return m_d2Range; }

    /// Restricts the D2 that enter a matrix, both ends included. The upper limit is only ever
    /// lowered.
    void setMinD2AndMaxD2(const Interval<int>& range);
    /// Restricts the m/z that enter a matrix, both ends included.
    void setMinMzAndMaxMz(const Interval<double>& range);

    /// Starts over: the next `getFrameRaw` fills a new window.
    void clearFramesAndSummingMatrix();

    /// The matrix of one frame, in bins of the nearest m/z. Points of one cell add up.
    /// \return kError for a factor below 1, or a frame too large for a matrix
    static Result<Matrix> frameToFrameRaw(const Frame& frame, int mzHashFactor, int d2HashFactor);

    /// The way back, each entry one point at the m/z of its bin; without those below intensity 1.
    /// \return kError for an m/z factor below 1
    static Result<Frame> frameRawToFrame(const Matrix& raw, int mzHashFactor, int d2HashFactor);

    /// Writes a line for each point. A file that cannot be written leaves a warning in the log.
    static void writeFrameToCSV(const Frame& frame, const QString& path);

private:
    Error setScansIds();
    Error setMaxD2();
    void setParametersToSumAllD1s();
    Error initSummingMatrix();
    Error loadFirstFrames(int d1);
    Error slideTo(int d1);
    Error checkWindowIsFull() const;
    Result<Frame> buildScanFrame(int d1);
    void buildMatrix(const Frame& frame, Matrix* matrix) const;
    int findD1Index(int d1) const;
    int columnOf(int d2) const;
    bool takesAllMz() const;

    msreader::MsDataSourceInterface* m_source = nullptr;
    SettableFeatureFinderParameters m_params;
    QSharedDataPointer<FrameSum> m_summingMatrix; ///< with its frames
    QMap<int, QList<msreader::MsScanId>> m_scanIdsByD1;
    QList<int> m_d1s; ///< the keys
    QMap<int, double> m_d1RetentionTimes;
    math::Range<long long> m_d1Range;
    math::Range<long long> m_d2Range;
    int m_maxD2 = -1;
    int m_minD2 = -1; ///< no lower limit
    double m_maxMz = g_immutableFeatureFinderParameters.maxMz;
    double m_minMz = 0.0;
    int m_maxPointsPerFrame = 15000;
};

} // namespace zel
