#include "turbo/index/TurboXic.h"

#include "tests/support/RecordingSink.h"
#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"
#include "tests/turbo/TurboReference.h"
#include "turbo/index/SpectrumMatrixBuilder_p.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace zel {

using msreader::InMemoryScan;
using test::HasError;
using test::IsOk;
using test::SourceProbe;
using ::testing::ElementsAre;

namespace {

using MzSet = math::ClosedMultiInterval<double, 10>;
using TimeSet = math::ClosedMultiInterval<double, 6>;

constexpr TurboXicSettings kSettings{.granularity = 1000, .maxMz = 402, .maxIonCount = 120};
const TimeSet kAllTimes = TimeSet::unbounded();
const MzSet kAllMz = MzSet::unbounded();

/// More than one chunk of MS1 scans, fragment scans between them, peaks up to beyond the index.
QList<InMemoryScan> randomScans(std::mt19937& random, int ms1Count)
{
    QList<InMemoryScan> scans;
    for (int i = 0; i < ms1Count; ++i) {
        const int peakCount = i % 13 == 0 ? 0 : 60 + i % 90;
        scans.append(
            test::scanOf(2 * i + 1, 0.02 * i, test::randomPeaks(random, peakCount, 400.0, 402.2)));
        scans.append(test::scanOf(2 * i + 2, 0.02 * i + 0.01, {{401.0, 1e6}}, 2));
    }
    return scans;
}

QList<XicDimensions> randomBoxes(std::mt19937& random, int count)
{
    std::uniform_real_distribution<double> mz(399.8, 402.3);
    std::uniform_real_distribution<double> minutes(-0.5, 6.5);
    QList<XicDimensions> boxes;
    for (int i = 0; i < count; ++i) {
        // Windows narrower than a bin, of a few bins, and wide; scans' own times, and any.
        double mzStart = mz(random);
        mzStart = i % 4 == 0 ? std::floor(mzStart * 1000) / 1000 : mzStart;
        const double mzWidth = (i % 3 == 0 ? 5e-4 : 0.3) * static_cast<double>(i % 7) / 7.0;
        double timeStart = minutes(random);
        timeStart = i % 5 == 0 ? 0.02 * std::floor(timeStart / 0.02) : timeStart;
        boxes.append(XicDimensions({mzStart, mzStart + mzWidth},
                                   {timeStart, timeStart + 0.1 * static_cast<double>(i % 11)}));
    }
    boxes.append(XicDimensions(kAllMz, kAllTimes));
    boxes.append(XicDimensions({401.0, 401.1}, kAllTimes));
    boxes.append(XicDimensions(kAllMz, {2.0, 2.2}));
    return boxes;
}

/// The peaks of the MS1 scans that an index keeps, and retrieval from them told directly.
class PlainIndex
{
public:
    PlainIndex(const QList<InMemoryScan>& scans, const TurboXicSettings& settings)
        : m_settings(settings)
    {
        for (const InMemoryScan& scan : scans) {
            if (scan.info.msLevel == 1) {
                m_times.append(scan.info.retentionTimeMinutes);
                m_peaks.append(test::indexedPeaks(scan.points, settings));
                m_peaks.last().erase(m_peaks.last().lower_bound(rowCount()), m_peaks.last().end());
            }
        }
    }

    QList<QPointF> xic(const XicDimensions& box) const
    {
        const double low = *box.mzInterval().minimum() - 1e-10;
        const double high = *box.mzInterval().maximum() + 1e-10;
        const auto isInside = [&](int bin) {
            const double mz = static_cast<double>(bin) / m_settings.granularity;
            return low <= mz && mz <= high;
        };
        const double start = *box.timeInterval().minimum() - 1e-6;
        const double end = *box.timeInterval().maximum() + 1e-6;
        qsizetype first = m_times.size() - 1;
        while (first > 0 && m_times[first - 1] >= start) {
            --first;
        }
        qsizetype last = 0;
        while (last < m_times.size() - 1 && m_times[last + 1] <= end) {
            ++last;
        }
        return sums(first, last, isInside);
    }

    QList<QPointF> xicPreGuava(const XicDimensions& box) const
    {
        if (box.timeInterval().isUnbounded()) {
            return xic(box);
        }
        const double start = *box.mzInterval().minimum();
        const double end = *box.mzInterval().maximum();
        const double firstBin = std::clamp(bin(start), 0.0, rowCount() - 1.0);
        const double extra = bin(end) < rowCount() ? bin(end - start) : rowCount();
        const auto isInside = [=](int row) { return firstBin <= row && row <= firstBin + extra; };
        return sums(nearest(*box.timeInterval().minimum()),
                    nearest(*box.timeInterval().maximum()),
                    isInside);
    }

private:
    int rowCount() const { return m_settings.maxMz * m_settings.granularity; }
    double bin(double mz) const { return std::floor(mz * m_settings.granularity + 0.5); }

    qsizetype nearest(double time) const
    {
        qsizetype best = 0;
        for (qsizetype i = 0; time >= 0 && i < m_times.size(); ++i) {
            best = std::abs(m_times[i] - time) < std::abs(m_times[best] - time) ? i : best;
        }
        return std::min(best, m_times.size() - 2);
    }

    template <typename IsInside>
    QList<QPointF> sums(qsizetype first, qsizetype last, IsInside isInside) const
    {
        QList<QPointF> xic;
        for (qsizetype scan = first; scan <= last; ++scan) {
            double sum = 0.0;
            for (const auto& [row, intensity] : m_peaks[scan]) {
                sum += isInside(row) ? intensity : 0.0;
            }
            xic.append(QPointF(m_times[scan], static_cast<double>(static_cast<float>(sum))));
        }
        return xic;
    }

    TurboXicSettings m_settings;
    QList<double> m_times;
    QList<std::map<int, double>> m_peaks;
};

Error buildFrom(msreader::MsDataSourceInterface* source, TurboXic* turbo)
{
    return turbo->init(source, QStringLiteral("fingerprint"), {});
}

} // namespace

TEST(TurboXicTest, EqualsThePlainSumOverTheScansForBothRetrievals)
{
    constexpr unsigned seed = 51;
    std::mt19937 random(seed);
    const QList<InMemoryScan> scans = randomScans(random, 300);
    const auto source = test::sourceOf(scans);
    const PlainIndex plain(scans, kSettings);
    const QList<XicDimensions> boxes = randomBoxes(random, 1500);
    for (const bool preGuava : {false, true}) {
        TurboXicSettings settings = kSettings;
        settings.preGuavaCompatible = preGuava;
        TurboXic turbo(settings);
        ASSERT_THAT(buildFrom(source.get(), &turbo), IsOk());
        ASSERT_EQ(turbo.scanCount(), 300);
        const auto check = [&] {
            for (const XicDimensions& box : boxes) {
                ASSERT_EQ(test::valueOf(turbo.retrieveXic(box)),
                          preGuava ? plain.xicPreGuava(box) : plain.xic(box))
                    << "seed " << seed << (preGuava ? ", pre guava" : "") << ", m/z "
                    << *box.mzInterval().minimum() << " to " << *box.mzInterval().maximum();
            }
        };
        std::thread other(check); // several threads may retrieve at once
        check();
        other.join();
    }
}

TEST(TurboXicTest, OnlyTheEndsOfASetCount)
{
    const auto source = test::runOf({1, 2, 3, 4}, {{400.1, 1}, {400.2, 10}, {400.3, 100}});
    TurboXic turbo(kSettings);
    ASSERT_THAT(buildFrom(source.get(), &turbo), IsOk());
    MzSet mz(400.05, 400.15);
    mz.unite({400.25, 400.35});
    TimeSet time(1, 1);
    time.unite({4, 4});
    EXPECT_THAT(test::valueOf(turbo.retrieveXic({mz, time})),
                ElementsAre(QPointF(1, 111), QPointF(2, 111), QPointF(3, 111), QPointF(4, 111)));
    EXPECT_THAT(test::valueOf(turbo.retrieveXic({mz, {}})), ElementsAre());
    EXPECT_THAT(test::valueOf(turbo.retrieveXic({mz, {7, 9}})), ElementsAre(QPointF(4, 111)))
        << "a window behind the run gives the last scan";
    EXPECT_THAT(test::valueOf(turbo.retrieveXic({mz, {-9, -7}})), ElementsAre(QPointF(1, 111)));

    TurboXicSettings settings = kSettings;
    settings.preGuavaCompatible = true;
    TurboXic preGuava(settings);
    ASSERT_THAT(buildFrom(source.get(), &preGuava), IsOk());
    // The pieces are 200 bins long together, so the window ends before 400.3. Of the scans at 2 and
    // 3 min the earlier one counts as the nearest to 2.5.
    EXPECT_THAT(test::valueOf(preGuava.retrieveXic({mz, {2.5, 4}})),
                ElementsAre(QPointF(2, 11), QPointF(3, 11)));
}

TEST(TurboXicTest, KeepsTheLastPeakOfABinAsItIs)
{
    const double fine = 1.0 + 1e-12; // more than single precision holds
    const auto source = test::runOf({1, 2}, {{400.1001, 5}, {400.1002, fine}, {401.9996, 9}});
    TurboXic turbo(kSettings);
    const Error built = buildFrom(source.get(), &turbo);
    ASSERT_THAT(built, IsOk());
    EXPECT_THAT(built.warnings(),
                ElementsAre(QStringLiteral("2 of 4 peaks share an m/z bin of their scan with a "
                                           "later one, and are left out")));
    EXPECT_THAT(test::valueOf(turbo.retrieveScanData(1)), ElementsAre(QPointF(400.1, fine)))
        << "the peak at 401.9996 would be in the bin behind the last";
    EXPECT_EQ(test::valueOf(turbo.retrieveXic({kAllMz, kAllTimes}))[0].y(), 1.0);
}

TEST(TurboXicTest, FindsScansByTimeAndIndex)
{
    const auto source = test::runOf({1, 2, 2, 4}, {{400.5, 1}});
    TurboXic turbo(kSettings);
    ASSERT_THAT(buildFrom(source.get(), &turbo), IsOk());
    for (const auto& [minutes, index] : {std::pair(-5.0, 0), {2.0, 1}, {4.0, 3}}) {
        EXPECT_EQ(test::valueOf(turbo.findScanIndex(minutes)), index);
    }
    EXPECT_THAT(turbo.findScanIndex(4.25),
                HasError(kBadParameterError, "Scan for time 4.25 does not exist."));
    EXPECT_THAT(turbo.findScanIndex(std::numeric_limits<double>::quiet_NaN()),
                HasError(kBadParameterError));
    const auto outOfRange = HasError(kError, "Index (4) is out of range (0 - 3)");
    EXPECT_THAT(turbo.scanTime(4), outOfRange);
    EXPECT_THAT(turbo.retrieveScanData(-1), HasError(kError));
}

TEST(TurboXicTest, AnIndexOfOneScanIsBuiltButNotValid)
{
    TurboXic turbo;
    ASSERT_THAT(buildFrom(test::runOf({1}, {{400.5, 0}}).get(), &turbo), IsOk())
        << "a peak of intensity 0 counts as stored";
    EXPECT_TRUE(turbo.isInitialized());
    EXPECT_FALSE(turbo.isValid());
    EXPECT_THAT(turbo.retrieveXic({kAllMz, kAllTimes}), HasError(kError));

    const auto other = test::runOf({1, 2}, {{400.5, 3}});
    SourceProbe probe(other.get());
    EXPECT_THAT(turbo.init(&probe, QStringLiteral("other"), {}), IsOk());
    EXPECT_EQ(probe.callCount, 0) << "an initialized object ignores init";
    EXPECT_EQ(turbo.dataFingerprint(), QStringLiteral("fingerprint"));
}

TEST(TurboXicTest, ReadsInChunksAndIgnoresCancellation)
{
    const auto source = test::runOf(QList<double>(501, 1.0), {{400.5, 1}});
    SourceProbe probe(source.get());
    const auto sink = QSharedPointer<test::RecordingSink>::create();
    sink->canceled = true;
    TurboXicSettings settings;
    settings.maxIonCount = std::numeric_limits<int>::max(); // no limit, and no memory for one
    TurboXic turbo(settings);
    ASSERT_THAT(turbo.init(&probe, {}, sink), IsOk());
    EXPECT_THAT(probe.chunkSizes, ElementsAre(250, 250, 1));
    EXPECT_EQ(sink->log, QStringLiteral("begin 3;step;step;step;end;"));
}

TEST(TurboXicTest, AFailedBuildLeavesTheObjectReadyForAnother)
{
    const auto source = test::runOf({1, 2, 3}, {{400.5, 1}});
    TurboXic turbo(kSettings);
    EXPECT_THAT(buildFrom(nullptr, &turbo), HasError(kError));
    EXPECT_THAT(buildFrom(test::sourceOf({}).get(), &turbo), HasError(kError)) << "no scan";
    EXPECT_THAT(buildFrom(test::runOf({1, 2}, {{402.0, 5}}).get(), &turbo), HasError(kError))
        << "no peak below the upper m/z";
    for (const TurboXicSettings& settings : {TurboXicSettings{.granularity = 0},
                                             TurboXicSettings{.granularity = -1, .maxMz = -1},
                                             TurboXicSettings{.maxIonCount = -1}}) {
        TurboXic useless(settings);
        EXPECT_THAT(buildFrom(source.get(), &useless), HasError(kError)) << settings.granularity;
    }
    SourceProbe probe(source.get());
    probe.beforeReading = [] { throw std::bad_alloc(); };
    EXPECT_THAT(buildFrom(&probe, &turbo), HasError(kError, "Not enough memory for the index"));
    probe.beforeReading = nullptr;
    probe.loseLastSpectrum = true;
    EXPECT_THAT(buildFrom(&probe, &turbo), HasError(kError));
    probe.failDataWith = Error(kFileFormatError, "broken scan");
    EXPECT_THAT(buildFrom(&probe, &turbo), HasError(kFileFormatError, "broken scan"));
    probe.failInfoWith = Error(kFileFormatError, "broken index");
    EXPECT_THAT(buildFrom(&probe, &turbo), HasError(kFileFormatError, "broken index"));
    EXPECT_FALSE(turbo.isInitialized());
    EXPECT_THAT(turbo.retrieveXic({kAllMz, kAllTimes}), HasError(kError));
    EXPECT_THAT(buildFrom(source.get(), &turbo), IsOk());
    TurboXic other(kSettings);
    ASSERT_THAT(buildFrom(test::runOf({1, 2, 3}, {{400.5, 2}}).get(), &other), IsOk());
    EXPECT_FALSE(turbo.compare(other));
}

TEST(SpectrumMatrixBuilderTest, StoresPeaksInWhateverOrderAndHoweverLittleIsReserved)
{
    constexpr TurboXicSettings settings{.granularity = 1000, .maxIonCount = 1000};
    for (const int reserved : {-1, 0, 3, 1000}) {
        std::mt19937 random(61);
        SpectrumMatrixBuilder builder(400400, 50, settings.granularity, reserved);
        Eigen::SparseMatrix<double> wanted(400400, 50);
        for (int column = 0; column < 40; column += 1 + column % 3) {
            QList<QPointF> peaks = test::randomPeaks(random, 10 + column, 400.0, 400.5);
            std::shuffle(peaks.begin(), peaks.end(), random);
            builder.skipToColumn(column);
            ASSERT_TRUE(builder.appendColumn(peaks));
            for (const auto& [row, intensity] : test::indexedPeaks(peaks, settings)) {
                if (row < wanted.rows()) {
                    wanted.insert(row, column) = intensity;
                }
            }
        }
        Eigen::SparseMatrix<double> matrix;
        builder.finish(&matrix);
        ASSERT_TRUE(matrix.isCompressed());
        ASSERT_EQ(matrix.cols(), wanted.cols());
        EXPECT_EQ(matrix.nonZeros(), wanted.nonZeros()) << "reserved " << reserved;
        EXPECT_EQ((matrix - wanted).norm(), 0.0) << "reserved " << reserved;
        EXPECT_LE(matrix.data().allocatedSize(), wanted.nonZeros() * 17 / 16)
            << "room that was not used is kept";
    }
}

} // namespace zel
