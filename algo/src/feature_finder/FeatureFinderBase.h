#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Export.h"
#include "common/stable/Progress.h"
#include "common/stable/Result.h"
#include "feature_finder/records/MasterFeature.h"

#include <QList>
#include <QMap>
#include <QSharedPointer>
#include <QString>

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader
class MsFeatureFinderFactory;

/// How much a finder found on its way to the features of a run.
struct FeatureFinderCounts
{
    long long hills = 0;
    long long clusters = 0; ///< isotope clusters, of all frames together
};

/// What the finders of untargeted features have in common. A finder takes one data source and gives
/// the compounds in it; see FeatureFinderFactory for which finder suits which source.
///
/// Make one, `init` it, then find features in one source after the other. One object serves one
/// thread at a time.
class ZEL_EXPORT FeatureFinderBase
{
public:
    /// Finds the features of one run.
    /// \param source    borrowed
    /// \param progress  may be null
    virtual Result<QList<MasterFeature>> findFeatures(
        msreader::MsDataSourceInterface* source, QSharedPointer<ProgressBarInterface> progress) = 0;

    /// Stores a copy of the parameters; never fails.
    virtual Error init(const SettableFeatureFinderParameters& params);

    virtual ~FeatureFinderBase();

    bool isInit() const { return m_isInit; }

    /// Of the last run.
    const FeatureFinderCounts& counts() const { return m_counts; }

    /// The factory that is handed on to the integrators of XICs; may be null.
    void setMsFeatureFinder(const QSharedPointer<MsFeatureFinderFactory>& factory);

    /// Sets the m/z grid to `binsPerMz` bins per Th, and the width of the m/z kernel to 7 bins for
    /// each 100 of them, rounded, made odd by one more.
    void setMobilityGranularity(int binsPerMz);

    /// Whether the source has mobility; kError for a null source, or the source's failure.
    static Result<bool> hasMobilityCheck(msreader::MsDataSourceInterface* source);

    /// The retention time in minutes of each scan or frame number of an MS level. Of scans of one
    /// number the last counts; numbers beyond the range of `int` are left out.
    /// \return kError for a null source, or the source's failure
    static Result<QMap<int, double>> buildIndexRetentionTimeMap(
        msreader::MsDataSourceInterface* source, int msLevel);

    /// Gives the sink, when there is one, the title of a run.
    static void setFilePathProgressText(const QSharedPointer<ProgressBarInterface>& progress,
                                        const QString& path);

    /// Writes `index` and `text` to the log when `index` is a multiple of `every`, which is not 0.
    static void debuggingProgressTracker(int index, int every, const QString& text);

protected:
    FeatureFinderBase();
    FeatureFinderBase(const FeatureFinderBase&);
    FeatureFinderBase& operator=(const FeatureFinderBase&);

    const SettableFeatureFinderParameters& userParams() const { return m_userParams; }
    void setCounts(const FeatureFinderCounts& counts) { m_counts = counts; }
    void setUserParams(const SettableFeatureFinderParameters& params) { m_userParams = params; }
    const QSharedPointer<MsFeatureFinderFactory>& msFeatureFinder() const
    {
        return m_msFeatureFinder;
    }

    /// Replaces start, apex and end of D1 in all members, scan or frame numbers, by minutes. A
    /// number that the source does not have at MS level 1 becomes 0.
    /// \return kError for a null source, or the source's failure
    static Error convertD1FromScanIndexToRetentionTimeMinutes(
        msreader::MsDataSourceInterface* source, QList<MasterFeature>* masters);

    /// Groups the charge states, and the pieces along retention, of each compound. Features are
    /// taken by ascending mass, equal ones in their order. Each joins the first master whose mass
    /// differs by at most `ppmTolerance` of the feature's mass and whose apex lies at most
    /// `maxD1Gap` apart, else it opens a new one. Mass and apex of a master are those of its
    /// strongest member so far, so they move as members join. Charges are not compared.
    /// \note O(n log n), plus for each feature the masters within the tolerance of its mass.
    QList<MasterFeature> groupChargeFeaturesToMasterFeatures(
        const QList<ChargeFeature>& features) const;

private:
    QSharedPointer<MsFeatureFinderFactory> m_msFeatureFinder;
    SettableFeatureFinderParameters m_userParams;
    FeatureFinderCounts m_counts;
    bool m_isInit = false;
};

} // namespace zel
