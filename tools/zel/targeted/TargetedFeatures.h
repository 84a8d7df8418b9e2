#pragma once

#include "ms_feature/finders/MsFeatureFinderFactory.h"
#include "tools/zel/targeted/RunSearch.h"
#include "tools/zel/targeted/TargetedDiagrams.h"
#include "tools/zel/targeted/TargetedOptions.h"

#include <memory>

namespace zel::tool {

/// Makes the finder that the options name; unlike the library's factory also the second edition.
class TargetedFinderFactory : public MsFeatureFinderFactory
{
public:
    explicit TargetedFinderFactory(const TargetedOptions& options);
    ~TargetedFinderFactory() override;

    MsFeatureFinderBase* create(const MsFeatureFinderSettings& settings) override;

private:
    bool m_makesSecondEdition;
    double m_kernelFilterWidth;
    bool m_mergesBeforeScoring;
};

/// Finds the features of the ions of all runs, run after run. A run in which the search or the
/// reading fails goes to the batch, and has none. \return kOperationCanceledError
Result<QList<FeaturesByHash>> findFeatures(const TargetedOptions& options,
                                           const Drawing& drawing,
                                           const QList<TargetedRun>& runs,
                                           const CommandContext& context,
                                           Batch* batch);

/// What became of the ions that have features in several runs.
struct AlignmentCounts
{
    int aligned = 0;
    int failed = 0; ///< as their chromatograms do not correlate, mostly; they stay as they were
};

/// Aligns the features of each ion across the runs, and measures the intervals that they get.
/// \return kOperationCanceledError
Result<AlignmentCounts> alignFeatures(const TargetedOptions& options,
                                      const Drawing& drawing,
                                      QList<FeaturesByHash>* featuresOfRuns,
                                      const QSharedPointer<ProgressBarInterface>& progress);

/// How many intervals have an apex of no height, as the prototype finder leaves it when no point
/// lies between an ion's matches.
int intervalsWithoutApex(const QList<FeaturesByHash>& featuresOfRuns);

/// One row for each ion, run and interval, ions in the order of their hashes; docs/file-formats.md
/// has the columns.
QByteArray featureTable(const QList<TargetedRun>& runs, const QList<FeaturesByHash>& features);

} // namespace zel::tool
