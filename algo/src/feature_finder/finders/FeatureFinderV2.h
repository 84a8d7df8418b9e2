#pragma once

#include "common/stable/Export.h"
#include "feature_finder/FeatureFinderBase.h"

#include <memory>

namespace zel {

/// The finder for LC-MS runs without ion mobility.
///
/// The run becomes one sparse matrix, m/z bins in rows and MS1 scans in columns. Its hills are
/// found on the signal as it is stored (profile where there is profile); then their limits and
/// apexes become scan numbers, and their m/z that of the strongest centroid inside the hill at the
/// apex scan. Isotope clusters are peeled off the hills, and charge states of one mass and time
/// make a master feature.
///
/// Lengths and gaps along D1 (`minHillLengthD1`, and `maxD1Gap` inside a cluster) are in columns,
/// so in MS1 scans for a `d2HashFactor` of 1, however these are numbered. Only the distance at
/// which charge states join, `maxD1Gap` again, is in scan numbers: where fragment scans share the
/// numbering of MS1 scans, charge states stay apart. A source should number its MS1 scans 1, 2, 3.
/// A `d2HashFactor` below 1 leaves columns without a scan, whose number is 0: a hill with its apex
/// there fails the run, unless the source has a scan 0.
///
/// The whole run lies in memory as one matrix, 12 bytes for each point kept. The work is not
/// canceled through the progress sink.
class ZEL_EXPORT FeatureFinderV2 : public FeatureFinderBase
{
public:
    FeatureFinderV2();
    ~FeatureFinderV2() override;
    Q_DISABLE_COPY_MOVE(FeatureFinderV2)

    /// \return masters ascending in mass, none for a run without a hill. kError for a null source
    ///         or for parameters that make no matrix (a `d2HashFactor` of 0, a width of the m/z
    ///         kernel below 3); the failure of the networks' file or of the source, at the first
    ///         scan that cannot be read
    Result<QList<MasterFeature>> findFeatures(
        msreader::MsDataSourceInterface* source,
        QSharedPointer<ProgressBarInterface> progress) override;

    class Private;

private:
    std::unique_ptr<Private> m_private;
};

} // namespace zel
