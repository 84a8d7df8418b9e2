#pragma once

#include "common/stable/Result.h"
#include "feature_finder/records/ChargeFeature.h"

#include <QList>
#include <QString>

namespace zel::tool {

/// The charge features of a `.ftrs` store, of features JSON or of the table that `zel features
/// --tsv` writes, known by the first bytes. Of a table: m/z, mass, charge, limits and apex in time,
/// intensity, number of isotopes and score, what there is of them; the mass must be.
/// \return kFileOpenError; kFileFormatError naming the file, and the row or key that is wrong
Result<QList<ChargeFeature>> readChargeFeatures(const QString& path);

} // namespace zel::tool
