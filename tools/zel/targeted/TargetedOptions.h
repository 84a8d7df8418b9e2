#pragma once

#include "ms_feature/alignment/Ms1FeatureAlignSettings.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"
#include "tools/zel/cli/RunFile.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace zel::tool {

/// The masses of a default IsotopeSelector.
std::vector<double> defaultIsotopeMasses();

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
    std::string isotopes = "single";
    std::vector<double> isotopeMasses = defaultIsotopeMasses();
    MsFeatureFinderSettings settings; ///< see finderSettings
    double kernelFilterWidth = 0.2;   ///< of adaptive-v2, minutes
    bool mergeBeforeScoring = false;  ///< of adaptive-v2

    std::string align = "different-topology";
    Ms1FeatureAlignSettings alignment; ///< see alignmentSettings
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
