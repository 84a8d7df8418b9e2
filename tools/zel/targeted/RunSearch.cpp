#include "tools/zel/targeted/RunSearch.h"

#include <algorithm>
#include <utility>

namespace zel::tool {

using msreader::PeakPickingFilter;
using PsmsByHash = MsFeatureFinderBase::PsmsByHash;

namespace {

/// Memory for spectra around one ion: ten minutes of ten scans a second with 2,500 peaks each.
constexpr qsizetype kKeptBytes = qsizetype{256} << 20;

double firstTime(const QList<PeptideSpectrumMatch>& psms)
{
    const auto first = std::ranges::min_element(psms, PeptideSpectrumMatch::cmpScanTime);
    return first == psms.end() ? 0.0 : first->scanTimeMinutes();
}

/// The ions in groups that follow each other in time.
QList<PsmsByHash> groupsInTime(const PsmsByHash& psms)
{
    constexpr qsizetype groupSize = 50;
    QList<std::pair<double, QString>> ions;
    for (auto ion = psms.cbegin(); ion != psms.cend(); ++ion) {
        ions.append({firstTime(ion.value()), ion.key()});
    }
    std::ranges::sort(ions);
    QList<PsmsByHash> groups;
    for (qsizetype i = 0; i < ions.size(); ++i) {
        if (i % groupSize == 0) {
            groups.append(PsmsByHash());
        }
        groups.last().insert(ions[i].second, psms[ions[i].second]);
    }
    return groups;
}

} // namespace

RunSearch::RunSearch(const TargetedOptions& options,
                     const TargetedRun& run,
                     QSharedPointer<msreader::ScanProgress> progress)
    : m_filter(options.profile ? PeakPickingFilter::Profile : PeakPickingFilter::Centroid)
    , m_foldsIsotopes(finderSettings(options).multiIsotopeMethod ==
                      MsFeatureFinderSettings::MultiIsotopeMethod::WeightedHarmonicMean)
    , m_run(run)
    , m_keptSpectra(run.source, kKeptBytes)
    , m_progress(std::move(progress))
{}

Error RunSearch::find(MsFeatureFinderBase* finder, const PsmsByHash& psms)
{
    return m_foldsIsotopes ? findInTurn(finder, psms) : findInOneGo(finder, psms);
}

Error RunSearch::findInOneGo(MsFeatureFinderBase* finder, const PsmsByHash& psms)
{
    ZEL_ASSIGN_OR_RETURN(const auto ids,
                         m_run.source->scanIds(msreader::MsQuery::createByMsLevel(1)));
    const msreader::ScanPass pass(ids.size(), title(), m_progress);
    return addFeatures(finder, psms);
}

/// Where isotopes are folded, the finder asks for the scans around one ion after the other. Taken
/// in the order of time, most of them are still there from the ion before.
Error RunSearch::findInTurn(MsFeatureFinderBase* finder, const PsmsByHash& psms)
{
    Error e;
    ProgressContext context(static_cast<int>(psms.size()), m_progress);
    context.setText(title());
    for (const PsmsByHash& group : groupsInTime(psms)) {
        ZEL_RETURN_IF_ERROR(addFeatures(finder, group));
        for (qsizetype i = 0; i < group.size(); ++i) {
            ++context;
        }
    }
    return kNoError;
}

Error RunSearch::addFeatures(MsFeatureFinderBase* finder, PsmsByHash psms)
{
    msreader::MsDataSourceInterface* const source =
        m_foldsIsotopes ? &m_keptSpectra
                        : static_cast<msreader::MsDataSourceInterface*>(m_run.source.get());
    ZEL_ASSIGN_OR_RETURN(
        const auto found,
        finder->constructXicWindow(XicWindowFactory(), m_filter, source, &psms, m_progress));
    for (const std::optional<Ms1Feature>& feature : found) {
        if (feature) {
            m_features.insert(feature->hash(), *feature);
        }
    }
    return m_run.source->firstFailure();
}

QString RunSearch::title() const
{
    return QStringLiteral("Finding features in ") + m_run.name;
}

} // namespace zel::tool
