#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"
#include "tests/turbo/TurboReference.h"
#include "turbo/cache/TurboXicLoader.h"
#include "turbo/index/TurboXic.h"

#include <QDataStream>
#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <tuple>

namespace zel {

using test::HasError;
using test::IsOk;
using test::valueOf;

namespace {

TurboXicSettings smallSettings()
{
    TurboXicSettings settings;
    settings.granularity = 100;
    settings.maxMz = 600;
    settings.maxIonCount = 20;
    return settings;
}

std::unique_ptr<TurboXic> indexOf(const QList<QList<QPointF>>& spectra,
                                  const QString& fingerprint = QStringLiteral("data"))
{
    QList<msreader::InMemoryScan> scans;
    for (qsizetype i = 0; i < spectra.size(); ++i) {
        scans.append(test::scanOf(i + 1, 0.1 * static_cast<double>(i), spectra[i]));
    }
    auto index = std::make_unique<TurboXic>(smallSettings());
    EXPECT_THAT(index->init(test::sourceOf(scans).get(), fingerprint, {}), IsOk());
    return index;
}

const QList<QPointF> kPeaks = {{400.0, 3}, {500.0, 7}};

/// Indexes whose peaks lie everywhere, in some scans only, in the last only, in the first only.
QList<QList<QList<QPointF>>> runsOfEveryShape()
{
    std::mt19937 random(3);
    QList<QList<QPointF>> full;
    for (int i = 0; i < 30; ++i) {
        full.append(i % 5 == 2 ? QList<QPointF>() : test::randomPeaks(random, 30, 390, 599));
    }
    return {
        full, {kPeaks, {}, kPeaks, {}, {}}, {{}, {}, {}, kPeaks}, {kPeaks, {}, {}, {}}, {kPeaks}};
}

class TurboXicCacheTest : public ::testing::Test
{
protected:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QByteArray savedBytes(const TurboXic& index) const
    {
        EXPECT_THAT(index.save(path("index.Turbo.cache")), IsOk());
        return read("index.Turbo.cache");
    }
    QByteArray read(const char* name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    void write(const char* name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir m_folder;
};

/// Where the fields of a file begin, read as the description of the format says.
struct Places
{
    qsizetype version = 0; ///< the third segment
    qsizetype timeCount = 0;
    qsizetype times = 0;
    qsizetype shape = 0; ///< rows, columns, entries, outer size, inner size
    qsizetype values = 0;
    qsizetype columnStarts = 0;
    qsizetype rows = 0;
    qsizetype end = 0;
    qint64 scanCount = 0;
    qint64 entryCount = 0;
};

Places placesIn(const QByteArray& bytes)
{
    QDataStream stream(bytes); // big-endian by default
    const auto skipBlock = [&stream](const char* key) {
        quint32 length = 0;
        stream >> length;
        QByteArray text(length, '\0');
        stream.readRawData(text.data(), static_cast<int>(length));
        EXPECT_TRUE(key == nullptr || text == key)
            << key << " expected, " << text.toStdString() << " found";
        return text;
    };
    const auto here = [&stream] { return stream.device()->pos(); };
    Places places;
    qint32 magic = 0;
    stream >> magic;
    EXPECT_EQ(magic, 0x70012B00);
    skipBlock("__com.zel.TurboXicCache");
    skipBlock("zel::Version");
    qint32 number = 0;
    for (const qint32 expected : {3, 0, 0}) {
        stream >> number;
        EXPECT_EQ(number, expected);
    }
    places.version = here();
    stream >> number;
    EXPECT_EQ(number, 2);
    skipBlock("zel::DateTime");
    const QByteArray date = skipBlock(nullptr);
    const QDateTime written =
        QDateTime::fromString(QString::fromLatin1(date), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    EXPECT_LE(std::abs(written.secsTo(QDateTime::currentDateTime())), 60);
    skipBlock("zel::Options");
    stream.skipRawData(3 * 4 + 2); // three integers, the filter, the flag
    skipBlock("zel::dataFingerprint");
    EXPECT_EQ(skipBlock(nullptr), QByteArray("\0d\0a\0t\0a", 8)) << "UTF-16, big-endian";
    skipBlock("zel::TimeIndex");
    places.timeCount = here();
    stream >> places.scanCount;
    places.times = here();
    stream.skipRawData(static_cast<int>(places.scanCount) * 8);
    skipBlock("zel::Blob");
    places.shape = here();
    qint64 size = 0;
    stream >> size >> size >> places.entryCount >> size >> size;
    places.values = here();
    places.columnStarts = places.values + places.entryCount * 8;
    places.rows = places.columnStarts + places.scanCount * 4;
    places.end = places.rows + places.entryCount * 4;
    return places;
}

template <typename T>
QByteArray rawOf(T value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

QByteArray bigEndian(qint64 value)
{
    return rawOf(qToBigEndian(value));
}

} // namespace

TEST_F(TurboXicCacheTest, RoundTripsIndexesOfEveryShape)
{
    for (const QList<QList<QPointF>>& spectra : runsOfEveryShape()) {
        const auto index = indexOf(spectra);
        const QByteArray bytes = savedBytes(*index);
        EXPECT_EQ(placesIn(bytes).end, bytes.size());
        TurboXic loaded(smallSettings());
        ASSERT_THAT(loaded.load(bytes + "bytes behind the end are ignored"), IsOk());
        EXPECT_TRUE(loaded.isInitialized());
        EXPECT_TRUE(loaded.compare(*index));
        EXPECT_EQ(loaded.dataFingerprint(), QStringLiteral("data"));
        for (int scan = 0; scan < index->scanCount(); ++scan) {
            EXPECT_EQ(valueOf(loaded.retrieveScanData(scan)),
                      valueOf(index->retrieveScanData(scan)));
        }
        if (index->isValid()) {
            const XicDimensions box({395, 505}, {0.05, 2.0});
            EXPECT_EQ(valueOf(loaded.retrieveXic(box)), valueOf(index->retrieveXic(box)));
        }
    }
}

TEST_F(TurboXicCacheTest, LaysTheBytesOutAsDescribed)
{
    const QByteArray bytes = savedBytes(*indexOf({kPeaks, {}, {{450.25, 2.5}}}));
    const Places places = placesIn(bytes);
    ASSERT_EQ(places.end, bytes.size());
    const auto has = [&bytes](qsizetype place, const auto& values) {
        return bytes.mid(place, sizeof values) == rawOf(values);
    };
    EXPECT_TRUE(has(places.times, std::array{0.0, 0.1, 0.1 * 2}));
    EXPECT_TRUE(has(places.values, std::array{3.0, 7.0, 2.5}));
    EXPECT_TRUE(has(places.columnStarts, std::array{0, 2, 2}));
    EXPECT_TRUE(has(places.rows, std::array{40000, 50000, 45025}));
}

TEST_F(TurboXicCacheTest, CompletesColumnStartsThatWereLeftOut)
{
    const auto index = indexOf({kPeaks, kPeaks, {}, {}});
    QByteArray bytes = savedBytes(*index);
    const Places places = placesIn(bytes);
    bytes.replace(places.columnStarts + 8, 8, QByteArray(8, '\0'));
    TurboXic loaded(smallSettings());
    ASSERT_THAT(loaded.load(bytes), IsOk());
    EXPECT_TRUE(loaded.compare(*index));
}

TEST_F(TurboXicCacheTest, RefusesDamagedBytesAndStaysAsItWas)
{
    const QByteArray good = savedBytes(*indexOf({kPeaks, kPeaks, {}}));
    const Places places = placesIn(good);
    const auto kept = indexOf({kPeaks, {}, kPeaks}, QStringLiteral("kept"));
    const auto expectKept = [&kept](const Error& e, const char* message, const std::string& what) {
        EXPECT_THAT(e, HasError(kFileFormatError, message)) << what;
        EXPECT_EQ(kept->dataFingerprint(), QStringLiteral("kept")) << what;
        EXPECT_TRUE(kept->compare(*indexOf({kPeaks, {}, kPeaks}))) << what;
    };
    // Cut off anywhere: the first two fields tell that it is a cache at all.
    for (qsizetype length = 0; length < good.size(); ++length) {
        const bool inHeader = length < 4 + 4 + 23;
        expectKept(kept->load(good.first(length)),
                   inHeader ? "Invalid header" : "Invalid file format",
                   "cut to " + std::to_string(length));
    }

    constexpr qint64 huge = std::numeric_limits<qint64>::max();
    const std::tuple<const char*, qsizetype, QByteArray> damages[] = {
        {"negative scan count", places.timeCount, bigEndian(-1)},
        {"scan count that overflows", places.timeCount, bigEndian(huge / 4)},
        {"NaN time", places.times, rawOf(std::nan(""))},
        {"NaN intensity", places.values + 8, rawOf(std::nan(""))},
        {"infinite intensity", places.values, rawOf(-HUGE_VAL)},
        {"descending times", places.times, rawOf(99.0)},
        {"negative rows", places.shape, bigEndian(-5)},
        {"rows beyond an index", places.shape, bigEndian(1LL << 40)},
        {"other columns than scans", places.shape + 8, bigEndian(2)},
        {"huge entry count", places.shape + 16, bigEndian(huge)},
        {"too many entries", places.shape + 16, bigEndian(5)},
        {"negative entries", places.shape + 16, bigEndian(-4)},
        {"other outer size", places.shape + 24, bigEndian(4)},
        {"other inner size", places.shape + 32, bigEndian(4)},
        {"byte order of another machine", places.columnStarts + 4, rawOf(2 << 24)},
        {"first column not at 0", places.columnStarts, rawOf(1)},
        {"descending columns", places.columnStarts + 4, rawOf(5)},
        {"row beyond the matrix", places.rows + 4, rawOf(60000)},
        {"negative row", places.rows, rawOf(-1)},
        {"rows out of order", places.rows, rawOf(50001)},
        {"row twice", places.rows, rawOf(50000)},
    };
    for (const auto& [what, place, damage] : damages) {
        QByteArray bytes = good;
        expectKept(
            kept->load(bytes.replace(place, damage.size(), damage)), "Invalid file format", what);
    }
    QByteArray otherVersion = good;
    otherVersion[places.version + 3] = 3;
    expectKept(kept->load(otherVersion), "Invalid version", "version 0.0.3");
}

// Whatever single byte is wrong, a file is refused or gives an index that can be used.
TEST_F(TurboXicCacheTest, SurvivesEveryFlippedByte)
{
    const QByteArray good = savedBytes(*indexOf({kPeaks, kPeaks, {}}));
    for (qsizetype place = 0; place < good.size(); ++place) {
        for (const char flip : {char(0x01), char(0x80), char(0xff)}) {
            QByteArray bytes = good;
            bytes[place] = static_cast<char>(bytes[place] ^ flip);
            TurboXic index(smallSettings());
            if (!index.load(bytes).hasError()) {
                EXPECT_EQ(index.scanCount(), 3);
                EXPECT_THAT(index.retrieveXic(XicDimensions({0, 1000}, {-10, 10})), IsOk())
                    << "byte " << place;
            } else {
                EXPECT_FALSE(index.isInitialized());
            }
        }
    }
}

TEST_F(TurboXicCacheTest, TellsCachesOfOtherSettingsByTheHeader)
{
    const auto index = indexOf({kPeaks, kPeaks});
    savedBytes(*index);
    const QString file = path("index.Turbo.cache");
    EXPECT_TRUE(index->isValidCacheFile(file));
    EXPECT_FALSE(index->isValidCacheFile(path("none")));

    using Change = void (*)(TurboXicSettings&);
    const Change changes[] = {
        [](TurboXicSettings& s) { s.granularity = 1000; },
        [](TurboXicSettings& s) { s.maxMz = 599; },
        [](TurboXicSettings& s) { s.maxMz = 601; },
        [](TurboXicSettings& s) { s.maxIonCount = 21; },
        [](TurboXicSettings& s) { s.peakPickingFilter = msreader::PeakPickingFilter::Profile; }};
    for (const Change change : changes) {
        TurboXicSettings settings = smallSettings();
        change(settings);
        TurboXic other(settings);
        EXPECT_FALSE(other.isValidCacheFile(file));
        EXPECT_THAT(other.load(file),
                    HasError(kFileFormatError, "MSReader options does not match"));
    }
    TurboXicSettings settings = smallSettings();
    settings.preGuavaCompatible = true;
    EXPECT_THAT(TurboXic(settings).load(file), IsOk()) << "the kind of retrieval is not compared";

    const auto header = valueOf(TurboXic::loadHeader(file));
    EXPECT_EQ(header.value(QStringLiteral("Version")), QStringLiteral("0.0.2"));
    EXPECT_EQ(header.value(QStringLiteral("DataFingerprint")), QStringLiteral("data"));
    const auto options = header.value(QStringLiteral("Options")).toMap();
    EXPECT_EQ(options.value(QStringLiteral("Granularity")), 100);
    EXPECT_EQ(options.value(QStringLiteral("MaxMz")), 600);
    EXPECT_EQ(options.value(QStringLiteral("MaxIonCount")), 20);
    EXPECT_EQ(options.value(QStringLiteral("PeakPickingFilter")), QStringLiteral("Centroid"));
    EXPECT_THAT(TurboXic::loadHeader(path("none")), HasError(kFileOpenError));
    write("other", "no cache at all");
    EXPECT_THAT(TurboXic::loadHeader(path("other")), HasError(kFileFormatError, "Invalid header"));
    EXPECT_THAT(TurboXic(smallSettings()).load(path("none")),
                HasError(kFileFormatError, "Invalid header"));
}

TEST_F(TurboXicCacheTest, SavesNothingWhereItCannot)
{
    const auto index = indexOf({kPeaks, kPeaks});
    EXPECT_THAT(index->save(path("new/folder/index.Turbo.cache")), IsOk());
    write("file", "in the way");
    EXPECT_THAT(index->save(path("file/index.Turbo.cache")),
                HasError(kFileOpenError, "Cannot create folder for cache storing!"));
    EXPECT_THAT(index->save(path("new/folder")),
                HasError(kFileOpenError, "Cannot open file for writing!"));
}

TEST_F(TurboXicCacheTest, LoaderReusesOrBuildsAndNeverRemovesForeignFiles)
{
    const auto source = test::runOf({0.0, 0.1, 0.2}, kPeaks);
    test::SourceProbe probe(source.get());
    const auto load = [this,
                       &probe](const char* name, const QString& fingerprint, TurboXic* index) {
        return TurboXicLoader(index, path(name), {}).tryLoadOrCreateCacheFile(&probe, fingerprint);
    };
    const QString fingerprint = QStringLiteral("run");
    constexpr char name[] = "run.Turbo.cache";
    TurboXic built(smallSettings());
    EXPECT_TRUE(load(name, fingerprint, &built));
    EXPECT_EQ(probe.chunkSizes.size(), 1);
    const QByteArray cache = read(name);

    TurboXic reused(smallSettings());
    EXPECT_TRUE(load(name, fingerprint, &reused));
    EXPECT_EQ(probe.chunkSizes.size(), 1) << "the source was read again";
    EXPECT_TRUE(reused.compare(built));

    QLoggingCategory::setFilterRules(QStringLiteral("zel.*=false"));
    TurboXic otherData(smallSettings());
    EXPECT_FALSE(load(name, QStringLiteral("other run"), &otherData));
    EXPECT_EQ(read(name), cache) << "a valid cache of other data is left alone";

    write(name, "damaged");
    TurboXic rebuilt(smallSettings());
    EXPECT_TRUE(load(name, fingerprint, &rebuilt));
    EXPECT_TRUE(rebuilt.compare(built));

    write("precious.txt", "not a cache");
    TurboXic refused(smallSettings());
    EXPECT_FALSE(load("precious.txt", fingerprint, &refused));
    EXPECT_EQ(read("precious.txt"), QByteArray("not a cache"));

    probe.failDataWith = Error(kError, "unreadable");
    TurboXic failed(smallSettings());
    EXPECT_FALSE(load("new.Turbo.cache", fingerprint, &failed));
    EXPECT_FALSE(QFile::exists(path("new.Turbo.cache")));
    probe.beforeReading = [] { throw std::bad_alloc(); };
    EXPECT_FALSE(load("new.Turbo.cache", fingerprint, &failed));
    QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they need the address space
/// Takes all memory but pieces below this size.
void useUpMemory(std::size_t pieceBytes)
{
    const rlimit limit{std::size_t{1} << 30, std::size_t{1} << 30};
    setrlimit(RLIMIT_AS, &limit);
    void* volatile piece = nullptr; // volatile: else the compiler leaves the loop out
    do {
        piece = std::malloc(pieceBytes);
    } while (piece != nullptr);
}

TEST_F(TurboXicCacheTest, GivesAnErrorWhereThereIsNoMemoryToSaveOrLoad)
{
    QList<QPointF> peaks;
    for (int i = 0; i < 20'000; ++i) {
        peaks.append(QPointF(1.0 + 0.01 * i, 1.0));
    }
    TurboXicSettings settings = smallSettings();
    settings.maxIonCount = 20'000;
    TurboXic index(settings);
    ASSERT_THAT(index.init(test::runOf(QList<double>(50, 1.0), peaks).get(), {}, {}), IsOk());
    ASSERT_THAT(index.save(path("good.Turbo.cache")), IsOk()); // 12 MB
    TurboXic other(settings);
    EXPECT_EXIT(
        {
            useUpMemory(1 << 20);
            const Error saved = index.save(path("bad.Turbo.cache"));
            const Error loaded = other.load(path("good.Turbo.cache"));
            std::cerr << saved.message().toStdString() << '|' << loaded.message().toStdString();
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0),
        "Not enough memory for the index.Not enough memory for the index");
    EXPECT_FALSE(QFile::exists(path("bad.Turbo.cache")));
    EXPECT_THAT(other.load(path("good.Turbo.cache")), IsOk());
}
#endif

} // namespace zel
