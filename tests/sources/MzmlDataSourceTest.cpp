#include "tools/sources/mzml/MzmlDataSource.h"

#include "tests/support/Matchers.h"
#include "tests/support/MzmlText.h"

#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace zel::msreader {

using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Points = QList<QPointF>;
using TimeSet = math::ClosedMultiInterval<double, 6>;

/// The window 400 - 0.5 to 400 + 1.5 around an ion of charge 3.
QByteArray precursorAt(double mz)
{
    const QByteArray centre = QByteArray::number(mz);
    return "<precursorList count=\"1\"><precursor><isolationWindow>" +
           cvParam("MS:1000827", centre, "MS:1000040") +
           cvParam("MS:1000828", "0.5", "MS:1000040") + cvParam("MS:1000829", "1.5", "MS:1000040") +
           "</isolationWindow><selectedIonList count=\"1\"><selectedIon>" +
           cvParam("MS:1000744", centre, "MS:1000040") + cvParam("MS:1000041", "3") +
           "</selectedIon></selectedIonList></precursor></precursorList>";
}

MzmlSpectrum spectrumOf(int msLevel, double minutes)
{
    MzmlSpectrum spectrum;
    spectrum.msLevel = msLevelParam(msLevel);
    spectrum.minutes = minutes;
    if (msLevel > 1) {
        spectrum.precursors = precursorAt(400.0);
    }
    return spectrum;
}

/// A mobility scan that is stored as a spectrum of its own.
MzmlSpectrum mobilitySpectrum(int msLevel, double minutes, double mobility, double mz)
{
    MzmlSpectrum spectrum = spectrumOf(msLevel, minutes);
    spectrum.points = {{mz, 1.0}};
    spectrum.scanParams = cvParam("MS:1002815", QByteArray::number(mobility), "MS:1002814");
    return spectrum;
}

/// A spectrum with a mobility for each point.
MzmlSpectrum combinedSpectrum(double minutes,
                              const Points& points,
                              const QList<double>& mobilities,
                              const QByteArray& arrayAccession)
{
    MzmlSpectrum spectrum = spectrumOf(1, minutes);
    spectrum.points = points;
    QList<double> mz;
    QList<double> intensities;
    for (const QPointF& point : points) {
        mz.append(point.x());
        intensities.append(point.y());
    }
    spectrum.arrays = arrayList(
        {mzArray(mz), intensityArray(intensities), arrayElement(arrayAccession, mobilities)});
    return spectrum;
}

class MzmlDataSourceTest : public ::testing::Test
{
protected:
    Result<QSharedPointer<MzmlDataSource>> tryOpen(const QByteArray& bytes)
    {
        return MzmlDataSource::open(writeFile(m_folder.filePath(QStringLiteral("run.xml")), bytes));
    }
    QSharedPointer<MzmlDataSource> open(const QByteArray& bytes) { return valueOf(tryOpen(bytes)); }

    /// Numbers the ids of the spectra first.
    QSharedPointer<MzmlDataSource> openRun(QList<MzmlSpectrum> spectra)
    {
        for (qsizetype i = 0; i < spectra.size(); ++i) {
            spectra[i].id = "controller=1 scan=" + QByteArray::number(101 + i);
        }
        return open(mzmlText(spectra));
    }

    static QList<MsScanId> idsOf(MzmlDataSource& source, int msLevel)
    {
        return valueOf(source.scanIds(MsQuery::createByMsLevel(msLevel)));
    }
    static QList<MsScanId> mobilityIdsOf(MzmlDataSource& source, int msLevel)
    {
        return valueOf(source.scanIds(MsQuery::createByMsLevel(msLevel).setD2({})));
    }
    static Points pointsOf(MzmlDataSource& source, const MsScanId& id)
    {
        return valueOf(source.scanData(MsQuery(id, PeakPickingFilter::Profile)));
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(MzmlDataSourceTest, NumbersMs1FirstAndKeepsTheFilesOwnNumbers)
{
    MzmlSpectrum absorption = spectrumOf(1, 1.2);
    absorption.msLevel = "";
    absorption.kind = cvParam("MS:1000804"); // electromagnetic radiation spectrum
    QList<MzmlSpectrum> spectra{
        spectrumOf(2, 1.0), spectrumOf(1, 1.1), absorption, spectrumOf(3, 1.3), spectrumOf(1, 1.4)};
    // Quotes and tags where they stand for themselves.
    spectra[1].scanParams =
        "<!-- don't: <userParam name=\"a > b\"/> --><userParam name=\"a > b\"/>";
    const auto source = openRun(spectra);
    EXPECT_THAT(idsOf(*source, 1), ElementsAre(MsScanId(1), MsScanId(2)));
    EXPECT_THAT(idsOf(*source, 2), ElementsAre(MsScanId(3)));
    EXPECT_THAT(idsOf(*source, 3), ElementsAre(MsScanId(4)));
    const ScanInfo info = valueOf(source->scanInfo(2));
    EXPECT_EQ(info.retentionTimeMinutes, 1.4);
    EXPECT_EQ(info.nativeScanNumber, 105);
    EXPECT_EQ(info.nativeId, QStringLiteral("controller=1 scan=105"));
    EXPECT_EQ(valueOf(source->precursorInfo(3)).isolationLowerOffset, 0.5);
    EXPECT_EQ(valueOf(source->precursorInfo(3)).isolationUpperOffset, 1.5);
    EXPECT_THAT(source->precursorInfo(1), HasError(kBadParameterError));
}

TEST_F(MzmlDataSourceTest, TurnsAllUnitsOfTimeIntoMinutes)
{
    QList<MzmlSpectrum> spectra(4);
    spectra[0].time = cvParam("MS:1000016", "1.5", "UO:0000031");   // minutes
    spectra[1].time = cvParam("MS:1000016", "96", "UO:0000010");    // seconds
    spectra[2].time = cvParam("MS:1000016", "99000", "UO:0000028"); // milliseconds
    spectra[3].time = cvParam("MS:1000016", "0.03", "UO:0000032");  // hours
    const auto source = openRun(spectra);
    const QList<double> minutes{1.5, 1.6, 1.65, 1.8};
    for (qsizetype i = 0; i < minutes.size(); ++i) {
        EXPECT_NEAR(valueOf(source->scanInfoBasic(i + 1)).retentionTimeMinutes, minutes[i], 1e-12);
    }
}

TEST_F(MzmlDataSourceTest, RepairsUnsortedAndFilledUpSpectraAndReadsEmptyOnes)
{
    QList<MzmlSpectrum> spectra(4);
    spectra[0].points = {{501.0, 1.0}, {500.0, 2.0}, {500.5, 3.0}};
    spectra[1].points = {{0.0, 0.0}};
    spectra[2].points = spectra[3].points = {};
    const QByteArray compressedNothing = "eJwDAAAAAAE=";
    spectra[3].arrays =
        arrayList({arrayElement("MS:1000514", {}, compressedNothing, "MS:1000574"),
                   arrayElement("MS:1000515", {}, compressedNothing, "MS:1000574")});
    const auto source = openRun(spectra);
    EXPECT_EQ(pointsOf(*source, 1), (Points{{500.0, 2.0}, {500.5, 3.0}, {501.0, 1.0}}));
    for (const int number : {2, 3, 4}) {
        EXPECT_THAT(pointsOf(*source, number), IsEmpty()) << number;
    }
}

TEST_F(MzmlDataSourceTest, ReadsOverInstructionsAndALongHead)
{
    MzmlSpectrum spectrum = spectrumOf(1, 1.0);
    spectrum.scanParams = "<?note it's <odd?>";
    QByteArray text = mzmlText({spectrum});
    text.insert(text.indexOf("<mzML"), "<!--" + QByteArray(20'000, ' ') + "-->");
    EXPECT_EQ(pointsOf(*open(text), 1).size(), 2);
}

TEST_F(MzmlDataSourceTest, TakesSpectraInOrderOfTimeWithAWarning)
{
    const auto source = openRun({spectrumOf(1, 1.0),
                                 spectrumOf(2, 3.1),
                                 spectrumOf(1, 2.0),
                                 spectrumOf(2, 2.1),
                                 spectrumOf(1, 4.0)});
    EXPECT_THAT(idsOf(*source, 1), ElementsAre(MsScanId(1), MsScanId(2), MsScanId(3)));
    EXPECT_EQ(valueOf(source->scanInfo(4)).nativeScanNumber, 104);
    EXPECT_EQ(valueOf(source->scanInfo(5)).nativeScanNumber, 102);
    ASSERT_EQ(source->warnings().size(), 1);
    EXPECT_TRUE(
        source->warnings()[0].contains(QStringLiteral("2 of 5 spectra stand out of order")));
    EXPECT_THAT(openRun({spectrumOf(1, 1.0), spectrumOf(1, 1.0)})->warnings(), IsEmpty());
}

TEST_F(MzmlDataSourceTest, RefusesADamagedIndex)
{
    QByteArray text = mzmlText({spectrumOf(1, 1.0), spectrumOf(1, 1.1)});
    const qsizetype start = text.indexOf("<mzML");
    text.insert(start, "<indexedmzML>\n");
    text += "<indexList count=\"1\"><index name=\"spectrum\">"
            "<offset idRef=\"scan=1\">77</offset><offset idRef=\"scan=1\">99999999</offset>"
            "</index></indexList><indexListOffset>" +
            QByteArray::number(text.size()) + "</indexListOffset></indexedmzML>\n";
    const auto source = tryOpen(text);
    ASSERT_THAT(source, HasError(kFileFormatError));
    EXPECT_TRUE(source.error().message().contains(QStringLiteral("its header cannot be read")));
}

TEST_F(MzmlDataSourceTest, JudgesTheKindThatAFileDoesNotState)
{
    MzmlSpectrum profile = spectrumOf(1, 1.0);
    MzmlSpectrum centroids = spectrumOf(2, 1.1);
    profile.kind = centroids.kind = "";
    profile.points.clear();
    centroids.points.clear();
    for (int peak = 0; peak < 20; ++peak) {
        centroids.points.append(QPointF(400.0 + 0.5 * peak, 100.0 + peak));
        for (const double offset : {-2.0, -1.0, 0.0, 1.0, 2.0}) {
            profile.points.append(QPointF(400.0 + 0.5 * peak + 0.004 * offset,
                                          100.0 * std::exp(-0.5 * offset * offset)));
        }
    }
    const auto source = openRun({profile, centroids});
    EXPECT_EQ(valueOf(source->scanInfo(1)).storedAs, PeakPickingFilter::Profile);
    EXPECT_EQ(valueOf(source->scanInfo(2)).storedAs, PeakPickingFilter::Centroid);
    EXPECT_EQ(valueOf(source->scanData(MsQuery(1, PeakPickingFilter::Centroid))).size(), 20);
}

TEST_F(MzmlDataSourceTest, JoinsTheMobilityScansOfAFrame)
{
    // Two frames, each in descending order of mobility as instruments give them; 0.9 is not in the
    // second one. A single scan of its own time is a frame too. Zero is a mobility like others.
    const auto source = openRun({mobilitySpectrum(1, 1.0, 1.1, 500.0),
                                 mobilitySpectrum(1, 1.0, 0.9, 501.0),
                                 mobilitySpectrum(1, 1.0, 0.0, 502.0),
                                 mobilitySpectrum(1, 1.1, 1.1, 503.0),
                                 mobilitySpectrum(1, 1.1, 0.0, 504.0),
                                 mobilitySpectrum(1, 1.2, 0.9, 505.0)});
    EXPECT_TRUE(valueOf(source->hasMobility()));
    EXPECT_EQ(valueOf(source->d2Range()), math::Range<long long>(1, 3));
    EXPECT_THAT(idsOf(*source, 1), ElementsAre(MsScanId(1), MsScanId(2), MsScanId(3)));
    EXPECT_THAT(mobilityIdsOf(*source, 1),
                ElementsAre(MsScanId(1, 1),
                            MsScanId(1, 2),
                            MsScanId(1, 3),
                            MsScanId(2, 1),
                            MsScanId(2, 3),
                            MsScanId(3, 2)));
    EXPECT_EQ(pointsOf(*source, {1, 1}), (Points{{502.0, 1.0}}));
    EXPECT_EQ(valueOf(source->scanInfo({1, 1})).mobility, 0.0);
    EXPECT_EQ(valueOf(source->scanInfo({1, 1})).nativeScanNumber, 103);
    EXPECT_FALSE(valueOf(source->scanInfo(MsScanId(1))).mobility);
    EXPECT_EQ(pointsOf(*source, 2), (Points{{503.0, 1.0}, {504.0, 1.0}}));
}

TEST_F(MzmlDataSourceTest, DoesNotTakeFragmentSpectraOfOneFrameForMobilityScans)
{
    // One mobility separation in which three ions were isolated one after the other; the last is
    // met by two scans.
    QList<MzmlSpectrum> spectra{mobilitySpectrum(1, 1.0, 0.8, 500.0),
                                mobilitySpectrum(1, 1.0, 0.9, 501.0),
                                mobilitySpectrum(2, 1.1, 0.95, 100.0),
                                mobilitySpectrum(2, 1.1, 0.85, 101.0),
                                mobilitySpectrum(2, 1.2, 0.85, 102.0)};
    spectra[3].precursors = precursorAt(450.0);
    const auto source = openRun(spectra);
    EXPECT_THAT(idsOf(*source, 2), ElementsAre(MsScanId(2), MsScanId(3), MsScanId(4)));
    EXPECT_THAT(mobilityIdsOf(*source, 2), IsEmpty());
    EXPECT_THAT(mobilityIdsOf(*source, 1), ElementsAre(MsScanId(1, 1), MsScanId(1, 2)));
    EXPECT_EQ(valueOf(source->scanInfo(2)).mobility, 0.95);
    EXPECT_EQ(valueOf(source->precursorInfo(3)).isolationMz, 450.0);

    spectra[3].precursors = spectra[2].precursors;
    const auto dia = openRun(spectra);
    EXPECT_THAT(idsOf(*dia, 2), ElementsAre(MsScanId(2), MsScanId(3)));
    EXPECT_THAT(mobilityIdsOf(*dia, 2),
                ElementsAre(MsScanId(2, 2), MsScanId(2, 4), MsScanId(3, 2)));
}

TEST_F(MzmlDataSourceTest, CutsFramesByTheirMobilityArray)
{
    // The second term is younger than libpwiz; a third frame has no points.
    const auto source = openRun(
        {combinedSpectrum(
             1.0, {{500.0, 1.0}, {400.0, 2.0}, {500.0, 4.0}}, {0.8, 1.0, 1.0}, "MS:1002477"),
         combinedSpectrum(
             1.1, {{500.0, 8.0}, {501.0, 16.0}, {0.0, 0.0}}, {0.9, 0.8, 0.1}, "MS:1003006"),
         combinedSpectrum(1.2, {}, {}, "MS:1003008")});
    EXPECT_TRUE(valueOf(source->hasMobility()));
    EXPECT_EQ(pointsOf(*source, 1), (Points{{400.0, 2.0}, {500.0, 5.0}}));
    EXPECT_EQ(pointsOf(*source, {1, 3}), (Points{{400.0, 2.0}, {500.0, 4.0}}));
    EXPECT_EQ(pointsOf(*source, {2, 1}), (Points{{501.0, 16.0}}));
    EXPECT_EQ(pointsOf(*source, {1, 1}), (Points{{500.0, 1.0}}));
    // The first frame has no point at 0.9, but a scan, since that lies inside its range.
    EXPECT_THAT(pointsOf(*source, {1, 2}), IsEmpty());
    EXPECT_EQ(valueOf(source->scanInfo({1, 2})).mobility, 0.9);
    EXPECT_EQ(valueOf(source->d2Range()), math::Range<long long>(1, 3));
    EXPECT_THAT(valueOf(source->scanIds(MsQuery::createByMsLevel(1).setD2({2, 3}))),
                ElementsAre(MsScanId(1, 2), MsScanId(1, 3), MsScanId(2, 2)));
    EXPECT_THAT(
        mobilityIdsOf(*source, 1),
        ElementsAre(
            MsScanId(1, 1), MsScanId(1, 2), MsScanId(1, 3), MsScanId(2, 1), MsScanId(2, 2)));
    EXPECT_THAT(source->scanData(MsQuery({2, 3}, PeakPickingFilter::Profile)),
                HasError(kBadParameterError));
    EXPECT_THAT(pointsOf(*source, 3), IsEmpty());
}

TEST_F(MzmlDataSourceTest, RefusesMobilitiesThatAreNoNumbers)
{
    const auto source =
        openRun({combinedSpectrum(1.0, {{500.0, 1.0}}, {std::nan("")}, "MS:1002477")});
    const auto ids = source->scanIds(MsQuery::createByMsLevel(1).setD2({}));
    ASSERT_THAT(ids, HasError(kFileFormatError));
    EXPECT_TRUE(ids.error().message().contains(QStringLiteral("mobilities must be finite")));
}

TEST_F(MzmlDataSourceTest, ReadsMzXml)
{
    // 32-bit big-endian pairs, an MS2 scan inside the MS1 scan, times as XML durations.
    const auto peaks = [](const QList<float>& values) {
        QByteArray bytes;
        for (const float value : values) {
            const auto swapped = qToBigEndian(std::bit_cast<quint32>(value));
            bytes.append(reinterpret_cast<const char*>(&swapped), sizeof swapped);
        }
        return "<peaks precision=\"32\" byteOrder=\"network\" contentType=\"m/z-int\" "
               "compressionType=\"none\" compressedLen=\"0\">" +
               bytes.toBase64() + "</peaks>";
    };
    const QByteArray run =
        "<mzXML><msRun scanCount=\"2\"><parentFile fileName=\"file:///a.raw\" "
        "fileType=\"RAWData\" fileSha1=\"0\"/><dataProcessing centroided=\"1\"/>"
        "<scan num=\"17\" msLevel=\"1\" peaksCount=\"2\" centroided=\"1\" polarity=\"-\" "
        "retentionTime=\"PT90S\">" +
        peaks({500.0F, 8.0F, 600.0F, 9.0F}) +
        "<scan num=\"18\" msLevel=\"2\" peaksCount=\"1\" centroided=\"1\" retentionTime=\"PT93S\">"
        "<precursorMz precursorIntensity=\"1\" precursorCharge=\"2\" windowWideness=\"3.0\">500.5"
        "</precursorMz>" +
        peaks({150.0F, 3.0F}) + "</scan></scan></msRun></mzXML>\n";
    const auto source = open(run);
    EXPECT_EQ(valueOf(source->retentionTimeRange()), TimeSet(1.5, 1.55));
    EXPECT_EQ(pointsOf(*source, 1), (Points{{500.0, 8.0}, {600.0, 9.0}}));
    EXPECT_EQ(pointsOf(*source, 2), (Points{{150.0, 3.0}}));
    const PrecursorInfo precursor = valueOf(source->precursorInfo(2));
    EXPECT_EQ(precursor.isolationMz, 500.5);
    EXPECT_EQ(precursor.isolationLowerOffset, 1.5);
    EXPECT_EQ(precursor.isolationUpperOffset, 1.5);
    EXPECT_EQ(precursor.charge, 2);
    EXPECT_EQ(valueOf(source->scanInfo(1)).polarity, Polarity::Negative);
    EXPECT_EQ(valueOf(source->scanInfo(2)).polarity, Polarity::Unknown);
    // The scan numbers stay, whatever file it was made of.
    for (const char* const origin : {"a.raw", "a.mzML", "A.MZML", "a.tdf", "a", ""}) {
        QByteArray other = run;
        other.replace("a.raw", origin);
        EXPECT_EQ(valueOf(open(other)->scanInfo(2)).nativeScanNumber, 18) << origin;
    }
}

} // namespace zel::msreader
