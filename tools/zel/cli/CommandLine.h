#pragma once

#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Error.h"
#include "common/stable/Setting.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace zel::tool {

// Arguments and checks that several commands share. What a check of a value accepts stands in its
// description, from which help is made.

/// Accepts finite numbers within the limits.
CLI::Validator isNumber(const SettingLimits& limits = {});

/// Accepts whole numbers within the limits.
CLI::Validator isWholeNumber(int lowest, int highest);

/// Accepts "true" and "false", and what is as good.
CLI::Validator isTruth();

/// Accepts these texts.
CLI::Validator isOneOf(const std::vector<std::string>& choices);

/// The names and the meaning of an option.
struct OptionText
{
    std::string names; ///< "-o,--output"
    std::string meaning;
};

/// Declares an option for values of the type of `like`. They are read with settingFromText by
/// whoever asks for the option's results.
CLI::Option* addSettingOption(CLI::App& command,
                              const OptionText& text,
                              const SettingValue& like,
                              const SettingLimits& limits);

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
