#pragma once

#include "common/stable/Export.h"
#include "common/stable/Result.h"
#include "feature_finder/records/ChargeFeatureList.h"

#include <QList>
#include <QString>

namespace zel {

/// Reads and writes charge features as text files. A file that cannot be written leaves a line in
/// the log and nothing else.
class ZEL_EXPORT FeatureFinderObjectUtils
{
public:
    /// The JSON form of ChargeFeatureList.
    static void writeChargeFeaturesJSONToText(const QString& path,
                                              const QList<ChargeFeature>& features);

    /// Reads what `writeChargeFeaturesJSONToText` wrote.
    /// \return an empty list for an empty path and for a file that cannot be opened; the failure of
    /// ChargeFeatureList::deserialize for a text that is not right
    static Result<ChargeFeatureList> readChargeFeatureListJSONFromText(const QString& path);

    /// CSV text for a spreadsheet: all fields but `mzFirstOfCluster`, real numbers with six
    /// significant digits.
    static void writeChargeFeaturesToCSV(const QString& path, const QList<ChargeFeature>& features);
};

} // namespace zel
