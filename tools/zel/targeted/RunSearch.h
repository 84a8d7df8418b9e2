#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "tools/sources/decorators/CachedDataSource.h"
#include "tools/zel/targeted/TargetedMatches.h"
#include "tools/zel/targeted/TargetedOptions.h"

#include <QMap>

namespace zel::tool {

/// The features of one run by the hashes of their ions.
using FeaturesByHash = QMap<QString, Ms1Feature>;

/// Looks for the features of ions in one run.
class RunSearch
{
public:
    /// \param run  borrowed
    RunSearch(const TargetedOptions& options,
              const TargetedRun& run,
              QSharedPointer<msreader::ScanProgress> progress);

    /// Adds the features of these ions. \return the failure of the finder, or of the reading, which
    /// a finder takes for an absence of signal
    Error find(MsFeatureFinderBase* finder, const MsFeatureFinderBase::PsmsByHash& psms);

    /// The same, with all ions in one call of the finder: a page that it draws has them in the
    /// order of their hashes.
    Error findInOneGo(MsFeatureFinderBase* finder, const MsFeatureFinderBase::PsmsByHash& psms);

    const FeaturesByHash& features() const { return m_features; }

private:
    using PsmsByHash = MsFeatureFinderBase::PsmsByHash;

    Error findInTurn(MsFeatureFinderBase* finder, const PsmsByHash& psms);
    Error addFeatures(MsFeatureFinderBase* finder, PsmsByHash psms);
    QString title() const;

    msreader::PeakPickingFilter m_filter;
    bool m_foldsIsotopes;
    const TargetedRun& m_run;
    msreader::CachedDataSource m_keptSpectra; ///< of the run, for the folding of isotopes
    QSharedPointer<msreader::ScanProgress> m_progress;
    FeaturesByHash m_features;
};

} // namespace zel::tool
