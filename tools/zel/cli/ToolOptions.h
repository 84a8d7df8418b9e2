#pragma once

#include "common/stable/Error.h"

#include <CLI/CLI.hpp>

#include <string>

namespace zel::tool {

/// The options that all commands have.
struct ToolOptions
{
    bool verbose = false;
    int threads = 0;         ///< 0: as many as the machine has processors
    std::string writeConfig; ///< where the call is written to instead of carried out
};

/// Declares them, and how help looks. Commands are to be added afterwards.
void addToolOptions(CLI::App& tool, ToolOptions& options);

/// Parses the arguments; throws CLI::ParseError. With --write-config nothing is required.
void parseArguments(CLI::App& tool, int argc, const char* const* argv);

/// Lets no work that is done in parallel take more threads.
void limitThreads(int count);

/// Writes the options of the chosen command to --write-config, those that were not given as
/// comments. \return kBadParameterError where that is a file that the call names
Error writeConfiguration(const CLI::App& tool, const ToolOptions& options);

/// The one line that says what is wrong with the arguments, and where help is.
std::string usageError(const CLI::App& tool, const CLI::ParseError& problem);

} // namespace zel::tool
