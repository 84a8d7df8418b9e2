#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "tools/zel/xic/ChromatogramPlot.h"

namespace zel::tool {

/// Says on standard error which chromatograms hold nothing: those without a scan in their times,
/// and those that are zero throughout. An empty answer is no failure.
/// \param source  gives the times of the run
void tellEmptyXics(const QList<NamedXic>& xics, msreader::MsDataSourceInterface* source);

} // namespace zel::tool
