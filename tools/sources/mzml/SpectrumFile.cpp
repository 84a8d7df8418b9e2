#include "tools/sources/mzml/SpectrumFile.h"

#include "tools/io/InputFile.h"
#include "tools/sources/mzml/AccessionAdapter.h"
#include "tools/sources/mzml/Fault.h"
#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <pwiz/data/msdata/MSData.hpp>
#include <pwiz/data/msdata/Serializer_mzML.hpp>
#include <pwiz/data/msdata/Serializer_mzXML.hpp>
#include <pwiz/data/msdata/SpectrumList_mzXML.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace zel::msreader {

namespace {

namespace pw = pwiz::msdata;
namespace cv = pwiz::cv;

/// How much of the end of a file is searched for the end of its root element.
constexpr qint64 kTailSize = 1 << 12;

enum class Format { Unknown, MzMl, IndexedMzMl, MzXml };

struct Root
{
    Format format = Format::Unknown;
    QByteArray start;
    QByteArray end;
};

/// The root element that opens first.
Root rootOf(const QByteArray& head)
{
    const Root roots[] = {{Format::IndexedMzMl, "<indexedmzML", "</indexedmzML>"},
                          {Format::MzMl, "<mzML", "</mzML>"},
                          {Format::MzXml, "<mzXML", "</mzXML>"},
                          {Format::MzXml, "<msRun", "</msRun>"}};
    Root first;
    qsizetype firstPosition = std::numeric_limits<qsizetype>::max();
    for (const Root& root : roots) {
        const qsizetype position = head.indexOf(root.start);
        if (position >= 0 && position < firstPosition) {
            first = root;
            firstPosition = position;
        }
    }
    return first;
}

/// libpwiz of 2018 refuses an mzXML file that was made of an mzML file. Without that suffix the
/// origin is one that it does not know, which is no failure.
void hideMzMlSuffix(std::span<char> fileName)
{
    const QByteArrayView suffix(".mzml");
    const QByteArrayView name(fileName.data(), static_cast<qsizetype>(fileName.size()));
    if (name.size() >= suffix.size() &&
        name.last(suffix.size()).compare(suffix, Qt::CaseInsensitive) == 0) {
        fileName[fileName.size() - static_cast<std::size_t>(suffix.size())] = '_';
    }
}

/// Makes the native ids of an mzXML file of its scan numbers, where libpwiz has counted the spectra
/// instead, as it does for files of an origin that it does not know.
void keepScanNumbers(const boost::shared_ptr<std::istream>& stream, pw::MSData& data)
{
    const cv::CVID format = pw::id::getDefaultNativeIDFormat(data);
    if (!pw::id::translateScanNumberToNativeID(format, "1").empty()) {
        return;
    }
    const pw::SourceFilePtr origin(new pw::SourceFile("origin"));
    origin->set(cv::MS_scan_number_only_nativeID_format);
    data.run.defaultSourceFilePtr = origin;
    data.run.spectrumListPtr = pw::SpectrumList_mzXML::create(stream, data, true);
}

void readRun(std::unique_ptr<QFile> file, Format format, pw::MSData& data)
{
    if (format == Format::MzXml) {
        const boost::shared_ptr<std::istream> stream(
            new FilteredFileStream(std::move(file), {"fileName=", hideMzMlSuffix}));
        pw::Serializer_mzXML().read(stream, data);
        keepScanNumbers(stream, data);
    } else {
        const boost::shared_ptr<std::istream> stream(
            new FilteredFileStream(std::move(file), accessionFilter()));
        pw::Serializer_mzML::Config config;
        config.indexed = format == Format::IndexedMzMl;
        pw::Serializer_mzML(config).read(stream, data);
    }
}

std::span<const double> spanOf(const pw::BinaryDataArrayPtr& array)
{
    if (!array || array->data.empty()) {
        return {};
    }
    return {&array->data[0], array->data.size()};
}

} // namespace

class SpectrumFile::Private
{
public:
    explicit Private(const QString& filePath)
        : path(filePath)
    {}

    const pw::SpectrumList& spectra() const { return *data.run.spectrumListPtr; }

    QString path;
    pw::MSData data;
    pw::SpectrumPtr current; ///< owner of the arrays that were given last
};

SpectrumFile::SpectrumFile(std::unique_ptr<Private> privateData)
    : m_private(std::move(privateData))
{}

SpectrumFile::~SpectrumFile() = default;

Result<std::unique_ptr<SpectrumFile>> SpectrumFile::open(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const auto input, io::InputFile::open(path));
    std::unique_ptr<SpectrumFile> opened(new SpectrumFile(std::make_unique<Private>(path)));
    const Root root = rootOf(input->head());
    if (root.format == Format::Unknown) {
        ZEL_RETURN_ERROR(opened->formatError(QStringLiteral("this is no mzML or mzXML file")));
    }
    ZEL_ASSIGN_OR_RETURN(std::unique_ptr<QFile> file, input->toSeekable());
    file->seek(std::max<qint64>(file->size() - kTailSize, 0));
    if (!file->read(kTailSize).contains(root.end)) {
        ZEL_RETURN_ERROR(opened->formatError(QStringLiteral("the file is cut off: %1 is missing")
                                                 .arg(QString::fromLatin1(root.end))));
    }

    pw::MSData& data = opened->m_private->data;
    const QString fault =
        faultOf([&data, &file, &root] { readRun(std::move(file), root.format, data); });
    if (!fault.isEmpty()) {
        ZEL_RETURN_ERROR(
            opened->formatError(QStringLiteral("its header cannot be read: %1").arg(fault)));
    }
    if (data.run.spectrumListPtr == nullptr || data.run.spectrumListPtr->empty()) {
        ZEL_RETURN_ERROR(opened->formatError(QStringLiteral("it contains no spectra")));
    }
    return opened;
}

const QString& SpectrumFile::path() const
{
    return m_private->path;
}

qsizetype SpectrumFile::spectrumCount() const
{
    return static_cast<qsizetype>(m_private->spectra().size());
}

QString SpectrumFile::nativeId(qsizetype index) const
{
    return QString::fromStdString(
        m_private->spectra().spectrumIdentity(static_cast<std::size_t>(index)).id);
}

Result<SpectrumHeader> SpectrumFile::readHeader(qsizetype index)
{
    SpectrumHeader header;
    const QString fault = faultOf([this, index, &header] {
        header = headerOf(*m_private->spectra().spectrum(static_cast<std::size_t>(index), false));
    });
    if (!fault.isEmpty()) {
        ZEL_RETURN_ERROR(
            formatError(index, QStringLiteral("its header cannot be read: %1").arg(fault)));
    }
    if (!header.isMassSpectrum) {
        return header;
    }
    if (header.info.msLevel == 0) {
        ZEL_RETURN_ERROR(formatError(index, QStringLiteral("it states no valid MS level")));
    }
    if (!std::isfinite(header.info.retentionTimeMinutes)) {
        ZEL_RETURN_ERROR(
            formatError(index, QStringLiteral("it states no valid scan start time with its unit")));
    }
    header.info.nativeScanNumber = scanNumberOf(nativeId(index));
    return header;
}

Result<SpectrumArrays> SpectrumFile::readArrays(qsizetype index, qsizetype pointCount)
{
    SpectrumArrays arrays;
    const QString fault = faultOf([this, index, pointCount, &arrays] {
        // With what the header said as a seed, libpwiz reads no more than the arrays.
        const pw::SpectrumPtr seed(new pw::Spectrum);
        seed->index = static_cast<std::size_t>(index);
        seed->defaultArrayLength = static_cast<std::size_t>(pointCount);
        m_private->current = m_private->spectra().spectrum(seed, true);
        const cv::CVID mobilityArray = cv::cvTermInfo(kMobilityArrayAccession).cvid;
        arrays = {spanOf(m_private->current->getMZArray()),
                  spanOf(m_private->current->getIntensityArray()),
                  spanOf(m_private->current->getArrayByCVID(mobilityArray))};
    });
    if (!fault.isEmpty()) {
        if (pointCount == 0) {
            return SpectrumArrays(); // libpwiz refuses a compressed array without values
        }
        ZEL_RETURN_ERROR(
            formatError(index, QStringLiteral("its data cannot be decoded: %1").arg(fault)));
    }
    const auto count = static_cast<std::size_t>(pointCount);
    const bool hasMobility = !arrays.mobility.empty();
    if (arrays.mz.size() != count || arrays.intensity.size() != count ||
        (hasMobility && arrays.mobility.size() != count)) {
        ZEL_RETURN_ERROR(formatError(
            index,
            QStringLiteral("%1 points were announced, but there are %2 m/z values, %3 intensities "
                           "and %4 mobilities")
                .arg(count)
                .arg(arrays.mz.size())
                .arg(arrays.intensity.size())
                .arg(arrays.mobility.size())));
    }
    return arrays;
}

Error SpectrumFile::formatError(const QString& what) const
{
    return Error(kFileFormatError, QStringLiteral("%1: %2").arg(m_private->path, what));
}

Error SpectrumFile::formatError(qsizetype index, const QString& what) const
{
    return formatError(QStringLiteral("spectrum \"%1\": %2").arg(nativeId(index), what));
}

} // namespace zel::msreader
