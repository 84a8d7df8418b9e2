#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Result.h"

#include <optional>

namespace zel::tool {

/// Full width at half height, Th, of a peak in m/z: the median over the highest peaks of some MS1
/// spectra across the run. Nothing for a run that is stored as centroids, or without a peak of
/// three samples.
Result<std::optional<double>> profilePeakWidth(msreader::MsDataSourceInterface* source);

} // namespace zel::tool
