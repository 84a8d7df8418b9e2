#include "common/stable/NumberText.h"
#include "common/stable/PhysicalConstants.h"
#include "common/stable/SharedNumbers.h"
#include "tools/identifications/PepXmlCheck.h"
#include "tools/identifications/PeptideText.h"
#include "tools/identifications/SpectrumMatchReaders.h"
#include "tools/sources/mzml/AccessionAdapter.h"
#include "tools/sources/mzml/Fault.h"
#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <pwiz/data/identdata/IdentData.hpp>
#include <pwiz/data/identdata/Serializer_mzid.hpp>
#include <pwiz/data/identdata/Serializer_pepXML.hpp>

#include <algorithm>
#include <cmath>

namespace zel::identifications {

using Reason = MatchReport::Reason;

namespace {

namespace pw = pwiz::identdata;
namespace cv = pwiz::cv;

/// The value of a parameter that is a number.
std::optional<double> numberOf(const std::string& value)
{
    bool isNumber = false;
    const double number = QByteArray::fromStdString(value).toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// A time in minutes, when the file says in which unit it is.
std::optional<double> minutesOf(const pw::CVParam& param)
{
    const bool isTime = param.cvid == cv::MS_scan_start_time ||
                        param.cvid == cv::MS_retention_time ||
                        param.cvid == cv::MS_retention_time_s__OBSOLETE;
    const std::optional<double> value = numberOf(param.value);
    if (!isTime || !value) {
        return std::nullopt;
    }
    if (param.units == cv::UO_minute) {
        return value;
    }
    const bool isInSeconds =
        param.units == cv::UO_second || param.cvid == cv::MS_retention_time_s__OBSOLETE;
    return isInSeconds ? std::optional(*value / kSecondsPerMinute) : std::nullopt;
}

std::optional<double> minutesOf(const pw::SpectrumIdentificationResult& result,
                                const pw::SpectrumIdentificationItem& item)
{
    for (const auto* const params : {&result.cvParams, &item.cvParams}) {
        for (const pw::CVParam& param : *params) {
            if (const auto minutes = minutesOf(param)) {
                return minutes;
            }
        }
    }
    return std::nullopt;
}

/// Where a modification sits: "M3", or a terminus.
QString siteOf(const pw::Modification& modification, const QString& sequence)
{
    if (modification.location <= 0) {
        return QStringLiteral("N-term");
    }
    if (modification.location > sequence.size()) {
        return QStringLiteral("C-term");
    }
    return sequence[modification.location - 1] + QString::number(modification.location);
}

/// "Oxidation@M3/15.994915", or "M3/15.994915" when the file has no name for it.
QString itemOf(const pw::Modification& modification, const QString& sequence)
{
    QString label;
    if (!modification.cvParams.empty() &&
        modification.cvParams.front().cvid != cv::MS_unknown_modification &&
        modification.cvParams.front().cvid != cv::CVID_Unknown) {
        label = QString::fromStdString(modification.cvParams.front().name());
    } else if (!modification.userParams.empty()) {
        label = QString::fromStdString(modification.userParams.front().name);
    }
    for (const char separator : {'/', ';', '%'}) {
        label.replace(QLatin1Char(separator), QLatin1Char('_'));
    }
    return (label.isEmpty() ? label : label + QLatin1Char('@')) + siteOf(modification, sequence) +
           QLatin1Char('/') +
           QString::fromLatin1(roundTripText(modification.monoisotopicMassDelta));
}

/// The modification text in the order of the sites, so that one ion has one text.
QString modificationsOf(const pw::Peptide& peptide, const QString& sequence)
{
    std::vector<pw::ModificationPtr> sorted = peptide.modification;
    std::ranges::stable_sort(sorted, {}, [](const auto& item) { return item->location; });
    QStringList items;
    for (const pw::ModificationPtr& modification : sorted) {
        items.append(itemOf(*modification, sequence));
    }
    return items.join(QLatin1Char(';'));
}

/// Whether all proteins that the peptide may come from are decoys: marked as such or, as pepXML has
/// no mark, by their names.
bool isDecoy(const pw::SpectrumIdentificationItem& item)
{
    static const char* const prefixes[] = {"decoy", "rev_", "xxx_"};
    const auto isDecoyEvidence = [](const pw::PeptideEvidencePtr& evidence) {
        const QString protein = evidence->dbSequencePtr
                                    ? QString::fromStdString(evidence->dbSequencePtr->accession)
                                    : QString();
        return evidence->isDecoy || std::ranges::any_of(prefixes, [&](const char* prefix) {
                   return protein.startsWith(QLatin1StringView(prefix), Qt::CaseInsensitive);
               });
    };
    return !item.peptideEvidencePtr.empty() &&
           std::ranges::all_of(item.peptideEvidencePtr, isDecoyEvidence);
}

/// Turns the items of one file into matches.
class ItemReader
{
public:
    ItemReader(const QString& path, const QString& scoreName)
        : m_path(path)
        , m_scoreName(scoreName)
    {}

    /// \param reason  receives what a failure is about
    Result<SpectrumMatch> read(const pw::SpectrumIdentificationResult& result,
                               const pw::SpectrumIdentificationItem& item,
                               Reason* reason) const
    {
        Error e;
        SpectrumMatch match;
        match.spectrumId = QString::fromStdString(result.spectrumID);
        match.place = QStringLiteral("%1, spectrum \"%2\"").arg(m_path, match.spectrumId);
        if (result.spectraDataPtr) {
            const pw::SpectraData& run = *result.spectraDataPtr;
            match.run = QString::fromStdString(run.location.empty() ? run.name : run.location);
        }
        *reason = Reason::Sequence;
        match.sequence =
            item.peptidePtr ? QString::fromStdString(item.peptidePtr->peptideSequence) : QString();
        ZEL_RETURN_IF_ERROR(at(match, checkSequence(match.sequence)));
        *reason = Reason::Modifications;
        match.modifications = modificationsOf(*item.peptidePtr, match.sequence);
        const Result<double> shiftsDa = sumOfMassShifts(match.modifications);
        ZEL_RETURN_IF_ERROR(at(match, shiftsDa.error()));
        *reason = Reason::Charge;
        match.charge = item.chargeState;
        if (match.charge < 1) {
            ZEL_RETURN_ERROR(
                at(match,
                   Error(kFileFormatError, QStringLiteral("the charge is %1").arg(match.charge))));
        }
        *reason = Reason::Mass;
        ZEL_ASSIGN_OR_RETURN(match.mz, mz(item, match, shiftsDa.value()));
        match.rtMinutes = minutesOf(result, item);
        *reason = Reason::Score;
        ZEL_ASSIGN_OR_RETURN(match.score, score(item, match));
        return match;
    }

private:
    /// The same failure with file and spectrum.
    static Error at(const SpectrumMatch& match, const Error& error)
    {
        return error.hasError()
                   ? Error(kFileFormatError, match.place + QLatin1String(": ") + error.message())
                   : error;
    }

    static Result<double> mz(const pw::SpectrumIdentificationItem& item,
                             const SpectrumMatch& match,
                             double shiftsDa)
    {
        if (item.calculatedMassToCharge > 0.0 && std::isfinite(item.calculatedMassToCharge)) {
            return item.calculatedMassToCharge;
        }
        const Result<double> mass = peptideMass(match.sequence, shiftsDa);
        if (!mass.isOk()) {
            ZEL_RETURN_ERROR(at(match, mass.error()));
        }
        return ionMz(mass.value(), match.charge, 0);
    }

    /// The score that was asked for, or the first that a search engine gave, or 0.
    Result<double> score(const pw::SpectrumIdentificationItem& item,
                         const SpectrumMatch& match) const
    {
        QStringList names;
        for (const pw::CVParam& param : item.cvParams) {
            const std::optional<double> value = numberOf(param.value);
            const auto& term = cv::cvTermInfo(param.cvid);
            const QString name = QString::fromStdString(term.name);
            const bool isWanted =
                m_scoreName.isEmpty()
                    ? cv::cvIsA(param.cvid, cv::MS_PSM_level_search_engine_specific_statistic)
                    : name == m_scoreName || QString::fromStdString(term.id) == m_scoreName;
            if (value && isWanted) {
                return scoreOf(name, *value);
            }
            names.append(name);
        }
        for (const pw::UserParam& param : item.userParams) {
            const QString name = QString::fromStdString(param.name);
            const std::optional<double> value = numberOf(param.value);
            if (value && name == m_scoreName) {
                return scoreOf(name, *value);
            }
            names.append(name);
        }
        if (m_scoreName.isEmpty()) {
            return 0.0;
        }
        ZEL_RETURN_ERROR(at(match,
                            Error(kFileFormatError,
                                  QStringLiteral("there is no score \"%1\"; there are %2")
                                      .arg(m_scoreName, names.join(QLatin1String(", "))))));
    }

    QString m_path;
    QString m_scoreName;
};

/// Why an item is left out without a look at what it says.
std::optional<Reason> reasonToSkip(const pw::SpectrumIdentificationItem& item)
{
    if (item.rank > 1) {
        return Reason::LowerRank;
    }
    if (!item.passThreshold) {
        return Reason::BelowThreshold;
    }
    return isDecoy(item) ? std::optional(Reason::Decoy) : std::nullopt;
}

QList<SpectrumMatch> matchesOf(const pw::IdentData& data,
                               const ItemReader& reader,
                               MatchReport* report)
{
    QList<SpectrumMatch> matches;
    for (const auto& list : data.dataCollection.analysisData.spectrumIdentificationList) {
        for (const auto& result : list->spectrumIdentificationResult) {
            for (const auto& item : result->spectrumIdentificationItem) {
                if (const std::optional<Reason> skip = reasonToSkip(*item)) {
                    report->leaveOut(*skip);
                    continue;
                }
                Reason reason = Reason::Sequence;
                Result<SpectrumMatch> match = reader.read(*result, *item, &reason);
                if (match.isOk()) {
                    matches.append(std::move(match.value()));
                } else {
                    report->leaveOut(reason, match.error().message());
                }
            }
        }
    }
    return matches;
}

/// What libpwiz cannot read. It does not survive a search parameter that names the unit of a
/// tolerance before the tolerance; none of them matters here.
msreader::AttributeFilter filterOf(IdentFormat format)
{
    if (format == IdentFormat::MzIdentMl) {
        return msreader::accessionFilter();
    }
    return {"<parameter name=", [](std::span<char> name) { std::ranges::fill(name, '?'); }};
}

} // namespace

Result<SpectrumMatchFile> readIdentData(io::InputFile& input,
                                        IdentFormat format,
                                        const QString& scoreName,
                                        MatchReport* report)
{
    const QString& path = input.path();
    ZEL_ASSIGN_OR_RETURN(std::unique_ptr<QFile> file, input.toSeekable());
    if (format == IdentFormat::PepXml) {
        const Error e = checkPepXml(file.get());
        if (e.hasError()) {
            ZEL_RETURN_ERROR(kFileFormatError, path + QLatin1String(": ") + e.message());
        }
        file->seek(0);
    }
    SpectrumMatchFile content;
    const QString fault = msreader::faultOf([&] {
        pw::IdentData data;
        const boost::shared_ptr<std::istream> stream(
            new msreader::FilteredFileStream(std::move(file), filterOf(format)));
        if (format == IdentFormat::PepXml) {
            pw::Serializer_pepXML().read(stream, data);
        } else {
            pw::Serializer_mzIdentML().read(stream, data);
        }
        content.matches = matchesOf(data, ItemReader(path, scoreName), report);
    });
    if (!fault.isEmpty()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 cannot be read: %2").arg(path, fault));
    }
    return content;
}

} // namespace zel::identifications
