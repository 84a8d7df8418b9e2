#include "common/stable/NumberText.h"
#include "ms1Matcher/Ms1Matcher.h"
#include "tools/io/FileCheck.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/TsvTable.h"
#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/digest/CountedModifications.h"
#include "tools/zel/digest/Digest.h"
#include "tools/zel/match/FeatureFile.h"
#include "tools/zel/match/PeptideFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace zel::tool {

namespace {

using Matches = QList<ChargeFeaturePeptideMatchList>;

/// No peptide of the list has nearly the mass of another plus or minus this, Da: what matches then
/// does so by chance.
constexpr double kShift = 11.1;
constexpr double kPartsPerMillion = 1e6;

struct MatchOptions
{
    std::string features;
    std::string peptides;
    std::string output;
    std::string json;
    double ppm = 10.0;
    DigestOptions digest;
};

Result<PeptidesList> readPeptides(const MatchOptions& options)
{
    const QString path = QString::fromStdString(options.peptides);
    ZEL_ASSIGN_OR_RETURN(const auto input, io::InputFile::open(path));
    const QByteArray start = input->head().trimmed();
    if (start.startsWith('>')) {
        ZEL_ASSIGN_OR_RETURN(const PeptidesList peptides, digestFasta(path, options.digest));
        return withMasses(path, peptides);
    }
    ZEL_ASSIGN_OR_RETURN(const QByteArray text, input->readText());
    ZEL_ASSIGN_OR_RETURN(const PeptidesList peptides, peptidesOfJson(path, text));
    return withMasses(path, peptides);
}

ChargeFeaturePeptideListMatchesList match(const PeptidesList& peptides,
                                          const QList<ChargeFeature>& features,
                                          double ppm)
{
    Ms1Matcher matcher(peptides, ChargeFeatureList(features), ppm);
    static_cast<void>(matcher.exec()); // never fails
    return matcher.matchedChargeFeaturePeptides();
}

/// The list with every mass changed.
PeptidesList shifted(const PeptidesList& peptides, double shift)
{
    PeptidesList moved;
    for (Peptide peptide : peptides.peptidesList()) {
        peptide.modifications.addModificationWithCount({1, {{}, {}, shift, -1}});
        moved.addPeptide(peptide);
    }
    return moved;
}

struct MatchCounts
{
    double matches = 0.0;
    double features = 0.0;
};

MatchCounts countsOf(const Matches& matched)
{
    MatchCounts counts{0.0, static_cast<double>(matched.size())};
    for (const ChargeFeaturePeptideMatchList& feature : matched) {
        counts.matches += static_cast<double>(feature.peptidesList().peptideMatchScores.size());
    }
    return counts;
}

/// The mean of what the list matches when it is shifted up and when it is shifted down.
MatchCounts countsByChance(const PeptidesList& peptides,
                           const QList<ChargeFeature>& features,
                           double ppm)
{
    MatchCounts mean;
    for (const double shift : {-kShift, kShift}) {
        const auto matched = match(shifted(peptides, shift), features, ppm);
        const MatchCounts counts = countsOf(matched.chargeFeaturePeptideMatches());
        mean.matches += counts.matches / 2;
        mean.features += counts.features / 2;
    }
    return mean;
}

QByteArray row(const ChargeFeature& feature, const Peptide& peptide)
{
    const double error = feature.monoIsotopicMass - peptide.mass();
    const QByteArrayList cells = {
        roundTripText(feature.mzApexOfCluster),
        roundTripText(feature.monoIsotopicMass),
        QByteArray::number(feature.charge),
        roundTripText(feature.apexD1),
        QByteArray::number(feature.apexIntensity),
        peptide.sequence.toUtf8(),
        io::tsvCell(modificationsText(peptide.modifications)),
        io::tsvCell(peptide.protein.toUtf8()),
        QByteArray::number(peptide.start + 1), // people count from 1
        QByteArray::number(peptide.end + 1),
        roundTripText(peptide.mass()),
        QByteArray::number(error / feature.monoIsotopicMass * kPartsPerMillion, 'f', 4),
    };
    return cells.join('\t') + '\n';
}

Error writeTable(const Matches& matched, const QString& path)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::openOrStandardOutput(path));
    *output
        << "mz\tmono_mass\tcharge\trt_apex\tintensity\tsequence\tmodifications\tprotein\tstart\t"
           "end\tpeptide_mass\terror_ppm\n";
    for (const ChargeFeaturePeptideMatchList& feature : matched) {
        for (const PeptideMatchScore& match : feature.peptidesList().peptideMatchScores) {
            *output << row(feature.chargeFeature(), match.peptide);
        }
    }
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

Error writeJson(const ChargeFeaturePeptideListMatchesList& matches, const QString& path)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::open(path));
    *output << matches.serialize().toUtf8();
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

void saySummary(const MatchCounts& found, const MatchCounts& byChance, qsizetype featureCount)
{
    tell(QStringLiteral("%1 matches, %2 of %3 features; by chance %4 matches, %5 features")
             .arg(found.matches, 0, 'f', 0)
             .arg(found.features, 0, 'f', 0)
             .arg(featureCount)
             .arg(byChance.matches, 0, 'f', 1)
             .arg(byChance.features, 0, 'f', 1));
}

/// Says how many features have no mass that a peptide can have.
void sayMassless(const QString& path, const QList<ChargeFeature>& features)
{
    const auto count = std::ranges::count_if(
        features, [](const ChargeFeature& feature) { return !(feature.monoIsotopicMass > 0.0); });
    if (count > 0) {
        tell(QStringLiteral("%1: %2 features without a positive mass match nothing")
                 .arg(path)
                 .arg(count));
    }
}

Error run(const MatchOptions& options, const CommandContext& /*context*/)
{
    Error e;
    const QString featuresPath = QString::fromStdString(options.features);
    const QString outputPath = QString::fromStdString(options.output);
    const QString jsonPath = QString::fromStdString(options.json);
    io::CommandFiles files{{featuresPath, QString::fromStdString(options.peptides)}, {outputPath}};
    if (!jsonPath.isEmpty()) {
        files.outputs.append(jsonPath);
    }
    ZEL_RETURN_IF_ERROR(io::checkFiles(files));
    ZEL_ASSIGN_OR_RETURN(const QList<ChargeFeature> features, readChargeFeatures(featuresPath));
    sayMassless(featuresPath, features);
    ZEL_ASSIGN_OR_RETURN(const PeptidesList peptides, readPeptides(options));
    const auto matches = match(peptides, features, options.ppm);
    const Matches matched = matches.chargeFeaturePeptideMatches();
    ZEL_RETURN_IF_ERROR(writeTable(matched, outputPath));
    if (!jsonPath.isEmpty()) {
        ZEL_RETURN_IF_ERROR(writeJson(matches, jsonPath));
    }
    saySummary(countsOf(matched), countsByChance(peptides, features, options.ppm), features.size());
    return e;
}

} // namespace

void addMatchCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<MatchOptions>();
    CLI::App* const command =
        tool.add_subcommand("match", "Match peptides to features by their mass");
    command
        ->add_option("features",
                     options->features,
                     "Features: .ftrs, or the JSON or table that zel features writes")
        ->required()
        ->type_name("FILE");
    command
        ->add_option(
            "peptides", options->peptides, "Peptides: the JSON of zel digest, or proteins (FASTA)")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("-o,--output",
                     options->output,
                     "Table of the matches (TSV); standard output if not given")
        ->type_name("FILE");
    command->add_option("--json", options->json, "The matches as JSON, too")->type_name("FILE");
    command->add_option("--ppm", options->ppm, "Tolerance, ppm of a feature's mass, both ways")
        ->check(isNumber({.lowest = 0.0}))
        ->capture_default_str();
    addDigestOptions(*command, options->digest);
    command->footer(
        "Mass alone proves little: the last line says how much the same peptides match when their "
        "masses are shifted by 11.1 Da up and down, on the mean. The options of digestion count "
        "for FASTA only.");
    command->callback([options, &chosen] {
        checkDigestOptions(options->digest);
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
