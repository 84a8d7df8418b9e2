#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace zel::tool {

/// Writes --help and --help-all: the former leaves out the options of kUnreadGroup.
class HelpText : public CLI::FormatterBase
{
public:
    std::string make_help(const CLI::App* app,
                          std::string name,
                          CLI::AppFormatMode mode) const override;
};

} // namespace zel::tool
