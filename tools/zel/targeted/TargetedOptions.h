#pragma once

#include "ms_feature/alignment/Ms1FeatureAlignSettingTable.h"
#include "ms_feature/records/MsFeatureFinderSettingTable.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/SettingOptions.h"

#include <string>
#include <vector>

namespace zel::tool {

/// What `zel targeted` is called with.
struct TargetedOptions
{
    std::vector<std::string> runs;
    std::vector<std::string> psms;
    std::string score;
    msreader::RunSelection selection;
    bool anyRun = false;
    bool profile = false;
    std::string output;
    std::string diagrams;
    int maxDiagramIons = 100;

    std::string mode = "adaptive";
    double kernelFilterWidth = 0.2;  ///< of adaptive-v2, minutes
    bool mergeBeforeScoring = false; ///< of adaptive-v2

    SettingOptions<MsFeatureFinderSettings> finderOptions;
    SettingOptions<Ms1FeatureAlignSettings> alignmentOptions;
};

/// Declares the options, each with its default.
void addTargetedOptions(CLI::App& command, TargetedOptions& options);

/// Whether the finder is one of the two adaptive ones, which draw diagrams.
bool isAdaptive(const TargetedOptions& options);

/// The settings of the finder, without a path of diagrams.
MsFeatureFinderSettings finderSettings(const TargetedOptions& options);

/// Those of the alignment, without a path of diagrams.
Ms1FeatureAlignSettings alignmentSettings(const TargetedOptions& options);

} // namespace zel::tool
