#include "common/stable/NumberText.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/io/TsvTable.h"
#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/digest/CountedModifications.h"
#include "tools/zel/digest/Digest.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace zel::tool {

namespace {

struct DigestFiles
{
    std::string fasta;
    std::string output;
    std::string tsv;
    DigestOptions digest;
};

Error writeTable(const PeptidesList& peptides, const QString& path)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::open(path));
    *output << "protein\tprotein_length\tsequence\tstart\tend\tmodifications\tmass\n";
    for (const Peptide& peptide : peptides.peptidesList()) {
        const QByteArrayList cells = {
            io::tsvCell(peptide.protein.toUtf8()),
            QByteArray::number(peptide.proteinLength),
            peptide.sequence.toUtf8(),
            QByteArray::number(peptide.start + 1), // people count from 1
            QByteArray::number(peptide.end + 1),
            io::tsvCell(modificationsText(peptide.modifications)),
            roundTripText(peptide.mass()),
        };
        *output << cells.join('\t') + '\n';
    }
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

Error run(const DigestFiles& files, const CommandContext& /*context*/)
{
    Error e;
    const QString fasta = QString::fromStdString(files.fasta);
    const QString outputPath = QString::fromStdString(files.output);
    const QString tsvPath = QString::fromStdString(files.tsv);
    io::CommandFiles checked{{fasta}, {outputPath}};
    if (!tsvPath.isEmpty()) {
        checked.outputs.append(tsvPath);
    }
    ZEL_RETURN_IF_ERROR(io::checkFiles(checked));
    ZEL_ASSIGN_OR_RETURN(const PeptidesList peptides, digestFasta(fasta, files.digest));
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::openOrStandardOutput(outputPath));
    *output << peptides.serialize().toUtf8();
    ZEL_RETURN_IF_ERROR(output->commit());
    if (!tsvPath.isEmpty()) {
        ZEL_RETURN_IF_ERROR(writeTable(peptides, tsvPath));
    }
    tell(QStringLiteral("%1 peptides").arg(peptides.size()));
    return e;
}

} // namespace

void addDigestCommand(CLI::App& tool, CommandAction& chosen)
{
    auto files = std::make_shared<DigestFiles>();
    CLI::App* const command =
        tool.add_subcommand("digest", "Make the list of the peptides of proteins");
    command->add_option("fasta", files->fasta, "Proteins (FASTA)")->required()->type_name("FILE");
    command
        ->add_option("-o,--output",
                     files->output,
                     "List of peptides (JSON), for zel match; standard output if not given")
        ->type_name("FILE");
    command->add_option("--tsv", files->tsv, "The list as a table, too")->type_name("FILE");
    addDigestOptions(*command, files->digest);
    command->footer("Positions in the table count from 1, those in JSON from 0. Trypsin, LysC and "
                    "ArgC also cut before P, but leave such places out of the missed cleavages.");
    command->callback([files, &chosen] {
        checkDigestOptions(files->digest);
        chosen = [files](const CommandContext& context) { return run(*files, context); };
    });
}

} // namespace zel::tool
