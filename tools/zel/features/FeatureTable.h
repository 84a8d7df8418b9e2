#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Result.h"
#include "feature_finder/records/MasterFeature.h"

#include <QByteArray>
#include <QList>
#include <QMap>

#include <optional>

namespace zel::tool {

/// The mobility, 1/K0 or ms as the run has it, of each mobility scan number of MS1; empty without
/// mobility.
Result<QMap<int, double>> mobilityByD2(msreader::MsDataSourceInterface* source);

/// What a table of features needs to know of the run.
struct FeatureTableAxes
{
    QMap<int, double> minutesByD1; ///< empty when D1 of the features are minutes already
    QMap<int, double> mobilityByD2;
};

/// The features as a table (TSV): one row for each charge feature, by master. `mz` is that of the
/// strongest isotope, times are in minutes, and the mobility columns are empty without mobility.
QByteArray featureTable(const QList<MasterFeature>& masters, const FeatureTableAxes& axes);

} // namespace zel::tool
