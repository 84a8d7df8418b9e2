#pragma once

#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Error.h"

#include <CLI/CLI.hpp>

#include <string>

namespace zel::tool {

// Arguments and checks that several commands share.

/// Accepts "A-B" with A <= B, two times in minutes.
CLI::Validator timeRangeValidator();

/// The range of a text that timeRangeValidator() has accepted.
math::ClosedMultiInterval<double, 6> parseTimeRange(const std::string& text);

/// Accepts "A-B" with A <= B, two m/z values.
CLI::Validator mzRangeValidator();

/// The range of a text that mzRangeValidator() has accepted.
Interval<double> parseMzRange(const std::string& text);

/// Fails when the run holds no scan of this level, naming the file.
Error checkHasMsLevel(msreader::MsDataSourceInterface* source, const QString& path, int msLevel);

} // namespace zel::tool
