#include "tools/sources/mzml/MzmlWriter.h"

#include "tools/io/OutputStream.h"
#include "tools/sources/ScanIndex.h"
#include "tools/sources/SpectrumUtils.h"
#include "tools/sources/mzml/Fault.h"

#include <QFileInfo>
#include <pwiz/data/msdata/Serializer_mzML.hpp>
#include <pwiz/data/msdata/SpectrumListBase.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <ostream>
#include <span>

namespace zel::msreader {

namespace {

namespace pw = pwiz::msdata;
namespace cv = pwiz::cv;

using Mobility = MzmlWriterOptions::Mobility;

constexpr std::size_t kSpectraPerStep = 100;

/// Digits enough to read the same double back.
std::string textOf(double number)
{
    return QByteArray::number(number, 'g', 17).toStdString();
}

/// Scans that become one spectrum.
struct ScanGroup
{
    std::span<const InMemoryScan> scans;
    bool isCombined = false; ///< a whole frame, with a mobility for each point
};

void setScan(const InMemoryScan& scan, bool isCombined, Mobility mobility, pw::Spectrum& spectrum)
{
    spectrum.scanList.set(cv::MS_no_combination);
    pw::Scan acquisition;
    acquisition.set(cv::MS_scan_start_time, textOf(scan.info.retentionTimeMinutes), cv::UO_minute);
    if (scan.info.mobility && !isCombined) {
        if (mobility == Mobility::DriftTime) {
            acquisition.set(
                cv::MS_ion_mobility_drift_time, textOf(*scan.info.mobility), cv::UO_millisecond);
        } else {
            acquisition.set(cv::MS_inverse_reduced_ion_mobility,
                            textOf(*scan.info.mobility),
                            cv::MS_volt_second_per_square_centimeter);
        }
    }
    const math::ClosedMultiInterval<double, 10> mzRange = scan.info.mzRange();
    for (const Interval<double>& range : mzRange.intervals()) {
        pw::ScanWindow window;
        window.set(cv::MS_scan_window_lower_limit, textOf(range.start), cv::MS_m_z);
        window.set(cv::MS_scan_window_upper_limit, textOf(range.end), cv::MS_m_z);
        acquisition.scanWindows.push_back(window);
    }
    spectrum.scanList.scans.push_back(acquisition);
}

void setPolarity(Polarity polarity, pw::Spectrum& spectrum)
{
    if (polarity != Polarity::Unknown) {
        spectrum.set(polarity == Polarity::Positive ? cv::MS_positive_scan : cv::MS_negative_scan);
    }
}

void setPrecursor(const PrecursorInfo& info, pw::Spectrum& spectrum)
{
    if (info.isolationMz <= 0.0 && info.selectedIonMz <= 0.0) {
        return;
    }
    pw::Precursor precursor;
    pw::IsolationWindow& window = precursor.isolationWindow;
    window.set(cv::MS_isolation_window_target_m_z, textOf(info.isolationMz), cv::MS_m_z);
    window.set(cv::MS_isolation_window_lower_offset, textOf(info.isolationLowerOffset), cv::MS_m_z);
    window.set(cv::MS_isolation_window_upper_offset, textOf(info.isolationUpperOffset), cv::MS_m_z);
    if (info.selectedIonMz > 0.0) {
        pw::SelectedIon ion;
        ion.set(cv::MS_selected_ion_m_z, textOf(info.selectedIonMz), cv::MS_m_z);
        if (info.charge != 0) {
            ion.set(cv::MS_charge_state, info.charge);
        }
        precursor.selectedIons.push_back(ion);
    }
    precursor.activation.set(cv::MS_dissociation_method);
    spectrum.precursors.push_back(precursor);
}

/// The mobility of each point.
pw::BinaryDataArrayPtr mobilityArrayOf(const ScanGroup& group, Mobility mobility)
{
    const pw::BinaryDataArrayPtr array(new pw::BinaryDataArray);
    if (mobility == Mobility::DriftTime) {
        array->set(cv::MS_mean_drift_time_array, "", cv::UO_millisecond);
    } else {
        array->set(cv::MS_mean_inverse_reduced_ion_mobility_array,
                   "",
                   cv::MS_volt_second_per_square_centimeter);
    }
    for (const InMemoryScan& scan : group.scans) {
        for (qsizetype i = 0; i < scan.points.size(); ++i) {
            array->data.push_back(scan.info.mobility.value_or(0.0)); // checked before
        }
    }
    return array;
}

void setPoints(const ScanGroup& group, pw::Spectrum& spectrum)
{
    pwiz::util::BinaryData<double> mz;
    pwiz::util::BinaryData<double> intensity;
    mz.reserve(spectrum.defaultArrayLength);
    intensity.reserve(spectrum.defaultArrayLength);
    for (const InMemoryScan& scan : group.scans) {
        for (const QPointF& point : scan.points) {
            mz.push_back(point.x());
            intensity.push_back(point.y());
        }
    }
    spectrum.swapMZIntensityArrays(mz, intensity, cv::MS_number_of_detector_counts);
}

/// Makes the spectra one by one, as libpwiz asks for them.
class SpectrumMaker : public pw::SpectrumListBase
{
public:
    SpectrumMaker(std::vector<ScanGroup> groups, Mobility mobility)
        : m_groups(std::move(groups))
        , m_mobility(mobility)
    {
        for (std::size_t i = 0; i < m_groups.size(); ++i) {
            const QString& nativeId = m_groups[i].scans.front().info.nativeId;
            pw::SpectrumIdentity identity;
            identity.index = i;
            identity.id =
                nativeId.isEmpty() ? "scan=" + std::to_string(i + 1) : nativeId.toStdString();
            m_identities.push_back(identity);
        }
    }

    std::size_t size() const override { return m_groups.size(); }
    const pw::SpectrumIdentity& spectrumIdentity(std::size_t index) const override
    {
        return m_identities.at(index);
    }
    pw::SpectrumPtr spectrum(std::size_t index, bool getBinaryData) const override
    {
        const ScanGroup& group = m_groups.at(index);
        const InMemoryScan& first = group.scans.front();
        const bool isMs1 = first.info.msLevel == 1;
        const bool isProfile = first.info.storedAs == PeakPickingFilter::Profile;
        const pw::SpectrumPtr made(new pw::Spectrum);
        static_cast<pw::SpectrumIdentity&>(*made) = m_identities.at(index);
        for (const InMemoryScan& scan : group.scans) {
            made->defaultArrayLength += static_cast<std::size_t>(scan.points.size());
        }
        made->set(isMs1 ? cv::MS_MS1_spectrum : cv::MS_MSn_spectrum);
        made->set(cv::MS_ms_level, first.info.msLevel);
        setPolarity(first.info.polarity, *made);
        if (first.info.compensationVoltage) {
            made->set(cv::MS_FAIMS_compensation_voltage,
                      textOf(*first.info.compensationVoltage),
                      cv::UO_volt);
        }
        made->set(isProfile ? cv::MS_profile_spectrum : cv::MS_centroid_spectrum);
        setScan(first, group.isCombined, m_mobility, *made);
        setPrecursor(first.precursor, *made);
        if (getBinaryData) {
            setPoints(group, *made);
            if (group.isCombined) {
                made->binaryDataArrayPtrs.push_back(mobilityArrayOf(group, m_mobility));
            }
        }
        return made;
    }

private:
    std::vector<ScanGroup> m_groups;
    std::vector<pw::SpectrumIdentity> m_identities;
    Mobility m_mobility;
};
/// Hands the progress of libpwiz on to ours.
class WriteProgress : public pwiz::util::IterationListener
{
public:
    WriteProgress(std::size_t spectrumCount, const QSharedPointer<ProgressBarInterface>& sink)
        : m_context(static_cast<int>(spectrumCount / kSpectraPerStep + 1), sink)
    {}

    bool isCanceled() const { return m_context.isCanceled(); }

    Status update(const UpdateMessage&) override
    {
        ++m_context;
        return isCanceled() ? Status_Cancel : Status_Ok;
    }

private:
    ProgressContext m_context;
};

/// Checks the scans and cuts them into spectra.
Result<std::vector<ScanGroup>> groupsOf(const QList<InMemoryScan>& scans,
                                        MzmlWriterOptions::Frames frames)
{
    std::vector<ScanRecord> records;
    records.reserve(static_cast<std::size_t>(scans.size()));
    for (const InMemoryScan& scan : scans) {
        QString fault = firstFaultOf(scan.points);
        if (fault.isEmpty() && scan.info.scanId.d2 &&
            !std::isfinite(scan.info.mobility.value_or(std::nan("")))) {
            fault = QStringLiteral("a mobility scan must have a mobility, a finite number");
        }
        if (!fault.isEmpty()) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("Scan %1: %2").arg(scan.info.scanId.toString(), fault));
        }
        records.push_back({scan.info, scan.precursor});
    }
    ZEL_ASSIGN_OR_RETURN(const ScanIndex index, ScanIndex::create(std::move(records)));

    std::vector<ScanGroup> groups;
    const std::span<const InMemoryScan> all(scans);
    for (const ScanIndex::Frame& frame : index.frames()) {
        const auto ofFrame = all.subspan(static_cast<std::size_t>(frame.first),
                                         static_cast<std::size_t>(frame.count));
        const auto unsorted =
            std::ranges::adjacent_find(ofFrame,
                                       std::greater_equal<>(),
                                       [](const InMemoryScan& scan) { return scan.info.mobility; });
        if (unsorted != ofFrame.end()) {
            ZEL_RETURN_ERROR(
                kBadParameterError,
                QStringLiteral("Scan %1: the next scan of its frame must have a higher mobility")
                    .arg(unsorted->info.scanId.toString()));
        }
        const bool hasMobility = ofFrame.front().info.scanId.d2.has_value();
        if (hasMobility && frames == MzmlWriterOptions::Frames::Combined) {
            groups.push_back({ofFrame, true});
            continue;
        }
        for (std::size_t i = 0; i < ofFrame.size(); ++i) {
            groups.push_back({ofFrame.subspan(i, 1), false});
        }
    }
    return groups;
}

/// What a file must say about itself.
void describeRun(const QString& path, pw::MSData& data)
{
    const pw::SoftwarePtr software(new pw::Software("zel_algo"));
    software->set(cv::MS_custom_unreleased_software_tool, "zel_algo");
    const pw::InstrumentConfigurationPtr instrument(new pw::InstrumentConfiguration("IC1"));
    instrument->set(cv::MS_instrument_model);
    const pw::DataProcessingPtr processing(new pw::DataProcessing("zel_algo_conversion"));
    pw::ProcessingMethod method;
    method.order = 0;
    method.softwarePtr = software;
    method.set(cv::MS_Conversion_to_mzML);
    processing->processingMethods.push_back(method);

    data.cvs = pw::defaultCVList();
    data.id = QFileInfo(path).baseName().toStdString();
    data.run.id = data.id;
    data.fileDescription.fileContent.set(cv::MS_mass_spectrum);
    data.softwarePtrs.push_back(software);
    data.instrumentConfigurationPtrs.push_back(instrument);
    data.dataProcessingPtrs.push_back(processing);
    data.run.defaultInstrumentConfigurationPtr = instrument;
}

void writeData(const pw::MSData& data,
               const boost::shared_ptr<WriteProgress>& progress,
               std::ostream& stream)
{
    pwiz::util::IterationListenerRegistry listeners;
    listeners.addListener(progress, kSpectraPerStep);
    pw::Serializer_mzML::Config config;
    config.binaryDataEncoderConfig.precision = pw::BinaryDataEncoder::Precision_64;
    config.binaryDataEncoderConfig.compression = pw::BinaryDataEncoder::Compression_Zlib;
    pw::Serializer_mzML(config).write(stream, data, &listeners);
}

} // namespace

Error writeMzml(const QString& path,
                const QList<InMemoryScan>& scans,
                const MzmlWriterOptions& options,
                const QSharedPointer<ProgressBarInterface>& progress)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(std::vector<ScanGroup> groups, groupsOf(scans, options.frames));
    ZEL_ASSIGN_OR_RETURN(const auto file, io::OutputFile::open(path));
    bool isCanceled = false;
    const QString fault = faultOf([&] {
        const boost::shared_ptr<WriteProgress> listener(new WriteProgress(groups.size(), progress));
        pw::MSData data;
        describeRun(path, data);
        const boost::shared_ptr<SpectrumMaker> maker(
            new SpectrumMaker(std::move(groups), options.mobility));
        maker->setDataProcessingPtr(data.dataProcessingPtrs.front());
        data.run.spectrumListPtr = maker;
        io::OutputStream stream(file.get(), path.endsWith(QLatin1String(".gz")));
        writeData(data, listener, stream);
        stream.finish();
        isCanceled = listener->isCanceled();
    });
    if (isCanceled || zel::isCanceled(progress)) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    if (!fault.isEmpty()) {
        ZEL_RETURN_ERROR(kError, QStringLiteral("Could not write %1: %2").arg(path, fault));
    }
    ZEL_RETURN_IF_ERROR(file->commit());
    return e;
}

} // namespace zel::msreader
