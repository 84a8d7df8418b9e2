#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QPointF>
#include <QString>

namespace zel::test {

/// A spectrum of an mzML file, to be written as text: unlike a writer, it can be wrong.
struct MzmlSpectrum
{
    QByteArray id = "scan=1";
    QList<QPointF> points = {{500.0, 10.0}, {501.0, 20.0}};
    QByteArray msLevel =
        R"(<cvParam cvRef="MS" accession="MS:1000511" name="ms level" value="1"/>)";
    QByteArray kind =
        R"(<cvParam cvRef="MS" accession="MS:1000127" name="centroid spectrum" value=""/>)";
    double minutes = 1.0;
    /// The element of the scan's time; made of `minutes` when empty.
    QByteArray time;
    /// Further elements of the spectrum, such as its precursors.
    QByteArray precursors;
    /// Further elements of the scan, such as its mobility.
    QByteArray scanParams;
    /// The number of points that is announced; that of `points` when negative.
    qsizetype announcedCount = -1;
    /// The arrays; made of `points` when empty.
    QByteArray arrays;
};

inline QByteArray cvParam(const QByteArray& accession,
                          const QByteArray& value = {},
                          const QByteArray& unitAccession = {})
{
    QByteArray unit;
    if (!unitAccession.isEmpty()) {
        unit = " unitCvRef=\"" + unitAccession.left(2) + "\" unitAccession=\"" + unitAccession +
               "\" unitName=\"unit\"";
    }
    return "<cvParam cvRef=\"MS\" accession=\"" + accession + "\" name=\"term\" value=\"" + value +
           "\"" + unit + "/>\n";
}

inline QByteArray msLevelParam(int msLevel)
{
    return cvParam("MS:1000511", QByteArray::number(msLevel));
}

/// One <binaryDataArray> of 64-bit numbers, not compressed.
/// \param encoded  the base64 text; made of `values` when null
inline QByteArray arrayElement(const QByteArray& accession,
                               const QList<double>& values,
                               QByteArray encoded = QByteArray(),
                               const QByteArray& compression = "MS:1000576")
{
    if (encoded.isNull()) {
        encoded = QByteArray::fromRawData(reinterpret_cast<const char*>(values.constData()),
                                          values.size() * qsizetype(sizeof(double)))
                      .toBase64();
    }
    return "<binaryDataArray encodedLength=\"" + QByteArray::number(encoded.size()) + "\">\n" +
           cvParam("MS:1000523") + cvParam(compression) + cvParam(accession) + "<binary>" +
           encoded + "</binary></binaryDataArray>\n";
}

inline QByteArray mzArray(const QList<double>& values)
{
    return arrayElement("MS:1000514", values);
}

inline QByteArray intensityArray(const QList<double>& values)
{
    return arrayElement("MS:1000515", values);
}

inline QByteArray arrayList(const QList<QByteArray>& arrays)
{
    return "<binaryDataArrayList count=\"" + QByteArray::number(arrays.size()) + "\">\n" +
           arrays.join() + "</binaryDataArrayList>\n";
}

/// The text of one spectrum.
inline QByteArray spectrumText(qsizetype index, const MzmlSpectrum& spectrum)
{
    QByteArray arrays = spectrum.arrays;
    if (arrays.isEmpty()) {
        QList<double> mz;
        QList<double> intensities;
        for (const QPointF& point : spectrum.points) {
            mz.append(point.x());
            intensities.append(point.y());
        }
        arrays = arrayList({mzArray(mz), intensityArray(intensities)});
    }
    const QByteArray time =
        spectrum.time.isEmpty()
            ? cvParam("MS:1000016", QByteArray::number(spectrum.minutes, 'g', 17), "UO:0000031")
            : spectrum.time;
    const qsizetype count =
        spectrum.announcedCount < 0 ? spectrum.points.size() : spectrum.announcedCount;
    return "<spectrum index=\"" + QByteArray::number(index) + "\" id=\"" + spectrum.id +
           "\" defaultArrayLength=\"" + QByteArray::number(count) + "\">\n" + spectrum.msLevel +
           spectrum.kind + "<scanList count=\"1\"><scan>" + time + spectrum.scanParams +
           "</scan></scanList>\n" + spectrum.precursors + arrays + "</spectrum>\n";
}

/// A whole file without an index.
inline QByteArray mzmlText(const QList<MzmlSpectrum>& spectra)
{
    QByteArray text =
        R"(<?xml version="1.0" encoding="utf-8"?>
<mzML xmlns="http://psi.hupo.org/ms/mzml" version="1.1.0">
<cvList count="2"><cv id="MS" fullName="MS" version="4" URI="u"/><cv id="UO" fullName="UO" version="1" URI="u"/></cvList>
<fileDescription><fileContent/></fileDescription>
<softwareList count="1"><software id="s" version="1"/></softwareList>
<instrumentConfigurationList count="1"><instrumentConfiguration id="i">
<cvParam cvRef="MS" accession="MS:1999999" name="an instrument of the future" value=""/>
</instrumentConfiguration></instrumentConfigurationList>
<dataProcessingList count="1"><dataProcessing id="d"><processingMethod order="0" softwareRef="s"/></dataProcessing></dataProcessingList>
<run id="r" defaultInstrumentConfigurationRef="i"><spectrumList count=")" +
        QByteArray::number(spectra.size()) + "\" defaultDataProcessingRef=\"d\">\n";
    for (qsizetype i = 0; i < spectra.size(); ++i) {
        text += spectrumText(i, spectra[i]);
    }
    return text + "</spectrumList></run></mzML>\n";
}

/// Writes a test file as it is. \return its path
inline QString writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("The test file %s cannot be written", qPrintable(path));
    }
    return path;
}

} // namespace zel::test
