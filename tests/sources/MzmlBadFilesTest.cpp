#include "tests/support/Matchers.h"
#include "tests/support/MzmlText.h"
#include "tests/support/Spectra.h"
#include "tools/sources/mzml/MzmlDataSource.h"
#include "tools/sources/mzml/MzmlWriter.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace zel::msreader {

using namespace test;
using ::testing::HasSubstr;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

QByteArray oneSpectrum(const std::function<void(MzmlSpectrum&)>& spoil)
{
    MzmlSpectrum spectrum;
    spoil(spectrum);
    return mzmlText({spectrum});
}

QByteArray withPoints(const QList<QPointF>& points)
{
    return oneSpectrum([&points](MzmlSpectrum& spectrum) { spectrum.points = points; });
}

/// Two points and these two arrays.
QByteArray withArrays(const QByteArray& mz, const QByteArray& intensity)
{
    return oneSpectrum([&mz, &intensity](MzmlSpectrum& spectrum) {
        spectrum.arrays = arrayList({mz, intensity});
    });
}

QByteArray withTime(const QByteArray& time)
{
    return oneSpectrum([&time](MzmlSpectrum& spectrum) { spectrum.time = time; });
}

/// A run in which the first spectrum lacks one quote. Long, since it used to cost the square of
/// what follows.
QByteArray missingQuote(const QByteArray& good, const QByteArray& bad)
{
    QByteArray text = mzmlText(QList<MzmlSpectrum>(20000));
    return text.replace(text.indexOf(good), good.size(), bad);
}

QByteArray garbage()
{
    std::mt19937 random(5);
    QByteArray bytes(5000, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// The bytes of a good file in gzip.
QByteArray gzipped()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("good.mzML.gz"));
    QList<QPointF> points;
    std::mt19937 random(3);
    for (int i = 0; i < 5000; ++i) {
        points.append(QPointF(400.0 + 0.1 * i, double(random())));
    }
    if (writeMzml(path, {scanOf(1, 1.0, points)}).hasError()) {
        return {};
    }
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray damaged(QByteArray bytes)
{
    for (qsizetype i = bytes.size() / 2; i < bytes.size() / 2 + 50; ++i) {
        bytes[i] = '?';
    }
    return bytes;
}

const QByteArray kMz = mzArray({500.0, 501.0});
const QByteArray kIntensity = intensityArray({10.0, 20.0});

struct BadFile
{
    const char* name;
    std::optional<QByteArray> bytes; ///< none: there is no such file
    ErrorCode code;
    const char* message;
};

/// Reads a file as a whole.
Error readAll(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const QSharedPointer<MzmlDataSource> source, MzmlDataSource::open(path));
    ZEL_ASSIGN_OR_RETURN([[maybe_unused]] const QList<QPointF> plot, source->basePeakPlot());
    return kNoError;
}

} // namespace

TEST(MzmlBadFilesTest, NamesTheFileAndWhatIsWrong)
{
    const BadFile files[] = {
        {"Missing", std::nullopt, kFileOpenError, "could not be opened"},
        {"Empty", "", kFileFormatError, "is empty"},
        {"Text", "m/z\tintensity\n", kFileFormatError, "no mzML or mzXML file"},
        {"Garbage", garbage(), kFileFormatError, "no mzML or mzXML file"},
        {"CutOff", mzmlText({MzmlSpectrum()}).chopped(200), kFileFormatError, "cut off"},
        {"CutOffGzip", gzipped().chopped(500), kFileFormatError, "gzip stream is cut off"},
        {"DamagedGzip", damaged(gzipped()), kFileFormatError, "gzip stream is damaged"},
        {"NoSpectra", mzmlText({}), kFileFormatError, "contains no spectra"},
        {"NoMs1",
         oneSpectrum([](MzmlSpectrum& spectrum) { spectrum.msLevel = msLevelParam(2); }),
         kFileFormatError,
         "contains no MS1 spectra"},
        {"NoLevel",
         oneSpectrum([](MzmlSpectrum& spectrum) { spectrum.msLevel = ""; }),
         kFileFormatError,
         "spectrum \"scan=1\": it states no valid MS level"},
        {"NoTime", withTime(" "), kFileFormatError, "\"scan=1\": it states no valid scan start"},
        {"TimeWithoutUnit",
         withTime(cvParam("MS:1000016", "1.5")),
         kFileFormatError,
         "\"scan=1\": it states no valid scan start"},
        {"MzNan", withPoints({{kNan, 1.0}}), kFileFormatError, "\"scan=1\": m/z must be finite"},
        {"IntensityNan", withPoints({{5.0, kNan}}), kFileFormatError, "intensities must be"},
        {"IntensityNegative", withPoints({{5.0, -2.0}}), kFileFormatError, "point 0 has -2"},
        {"IntensitiesTooFew",
         withArrays(kMz, intensityArray({10.0})),
         kFileFormatError,
         "expected array of size 2"},
        {"CountTooHigh",
         oneSpectrum([](MzmlSpectrum& spectrum) { spectrum.announcedCount = 4000000000; }),
         kFileFormatError,
         "expected array of size 4000000000"},
        {"ArrayEmpty",
         withArrays(kMz, arrayElement("MS:1000515", {}, "")),
         kFileFormatError,
         "2 points were announced, but there are 2 m/z values, 0 intensities"},
        {"ArrayMissing",
         withArrays(kMz, {}),
         kFileFormatError,
         "2 points were announced, but there are 2 m/z values, 0 intensities"},
        {"Base64CutOff",
         withArrays(kMz, arrayElement("MS:1000515", {}, "AAAAAAAAJEAAAAAAAA")),
         kFileFormatError,
         "\"scan=1\": its data cannot be decoded"},
        {"ZlibDamaged",
         withArrays(kMz, arrayElement("MS:1000515", {}, "eJxjYGBgAAAABAAB", "MS:1000574")),
         kFileFormatError,
         "\"scan=1\": its data cannot be decoded"},
        {"QuoteMissing",
         missingQuote("name=\"ms level\"", "name=\"ms level"),
         kFileFormatError,
         "a quote or a \">\" is missing before byte"},
        {"OpeningQuoteMissing",
         missingQuote("id=\"scan=1\"", "id=scan=1\""),
         kFileFormatError,
         "a quote or a \">\" is missing before byte"},
        {"XmlBroken",
         mzmlText({MzmlSpectrum()}).replace("<scanList", "<<scan\"List"),
         kFileFormatError,
         "its header cannot be read"}};
    for (const auto& [name, bytes, code, message] : files) {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("bad.mzML"));
        if (bytes) {
            writeFile(path, *bytes);
        }
        const Error error = readAll(path);
        ASSERT_THAT(error, HasError(code)) << name;
        EXPECT_THAT(error.message().toStdString(), HasSubstr("bad.mzML")) << name;
        EXPECT_THAT(error.message().toStdString(), HasSubstr(message)) << name;
    }
}

} // namespace zel::msreader
