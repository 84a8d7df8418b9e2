#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/zel/cli/Command.h"
#include "tools/zel/xlink/AntibodyChains.h"
#include "tools/zel/xlink/AntibodyPicture.h"
#include "tools/zel/xlink/LinkedPeptides.h"
#include "xlink/AntibodyCysteineMarker.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <string>

namespace zel::tool {

using Link = xlink::AntibodyXlinkPredictor::Link;
using xlink::AntibodyCysteineMarker;

namespace {

struct XlinkOptions
{
    std::string heavy;
    std::string light;
    std::string heavy2;
    std::string light2;
    std::string fasta;
    std::string output;
    std::string cysteines;
    std::string html;
    std::string peptides;
};

QList<io::FastaRecord> recordsOf(const std::string& first, const std::string& second)
{
    QList<io::FastaRecord> records = {{{}, QString::fromStdString(first)}};
    if (!second.empty()) {
        records.append({{}, QString::fromStdString(second)});
    }
    return records;
}

Result<AntibodyChains> readChains(const XlinkOptions& options)
{
    return options.fasta.empty() ? antibodyChains(recordsOf(options.heavy, options.heavy2),
                                                  recordsOf(options.light, options.light2))
                                 : antibodyChainsOfFasta(QString::fromStdString(options.fasta));
}

/// What a link is between, in the first chain's view.
const char* kindOf(const Link& link)
{
    constexpr int lightFrom = 2;
    return link.firstChain == link.secondChain                           ? "within a chain"
           : link.firstChain < lightFrom && link.secondChain < lightFrom ? "hinge"
                                                                         : "heavy-light";
}

QByteArray placeCells(const AntibodyChains& chains, int chain, int position)
{
    return chains[static_cast<std::size_t>(chain)].label.toUtf8() + '\t' +
           QByteArray::number(position + 1); // people count from 1
}

QByteArray linkTable(const AntibodyChains& chains, const QList<Link>& links)
{
    QByteArray table = "kind\tchain\tposition\tlinked_chain\tlinked_position\n";
    for (const Link& link : links) {
        table += QByteArray(kindOf(link)) + '\t' +
                 placeCells(chains, link.firstChain, link.firstPosition) + '\t' +
                 placeCells(chains, link.secondChain, link.secondPosition) + '\n';
    }
    return table;
}

/// "pair 2" for one of the second two; empty for none.
QByteArray pairText(std::span<const int> pairs, int position)
{
    const auto found = std::ranges::find(pairs, position) - pairs.begin();
    return found == std::ssize(pairs) ? QByteArray() : "pair " + QByteArray::number(found / 2 + 1);
}

/// What a cysteine is marked as; empty for one that is not.
QByteArray markOf(const AntibodyChain& chain, int position)
{
    if (chain.isHeavy) {
        const auto marked = AntibodyCysteineMarker::markHeavyChain(chain.sequence);
        return marked.lightChainLink == position ? QByteArray("light chain")
               : marked.hinge.contains(position) ? QByteArray("hinge")
                                                 : pairText(marked.positions, position);
    }
    const auto marked = AntibodyCysteineMarker::markLightChain(chain.sequence);
    return marked.positions[4] == position
               ? QByteArray("heavy chain")
               : pairText(std::span(marked.positions).first<4>(), position);
}

/// The cells of the place that a cysteine is linked to; empty ones for none.
QByteArray linkedCells(const AntibodyChains& chains,
                       const QList<Link>& links,
                       int chain,
                       int position)
{
    for (const Link& link : links) {
        if (link.firstChain == chain && link.firstPosition == position) {
            return placeCells(chains, link.secondChain, link.secondPosition);
        }
        if (link.secondChain == chain && link.secondPosition == position) {
            return placeCells(chains, link.firstChain, link.firstPosition);
        }
    }
    return "\t";
}

QByteArray cysteineTable(const AntibodyChains& chains, const QList<Link>& links)
{
    QByteArray table = "chain\tposition\tmark\tlinked_chain\tlinked_position\n";
    for (int chain = 0; chain < static_cast<int>(chains.size()); ++chain) {
        const AntibodyChain& marked = chains[static_cast<std::size_t>(chain)];
        for (int i = 0; i < static_cast<int>(marked.sequence.size()); ++i) {
            if (marked.sequence[i] == u'C') {
                table += placeCells(chains, chain, i) + '\t' + markOf(marked, i) + '\t' +
                         linkedCells(chains, links, chain, i) + '\n';
            }
        }
    }
    return table;
}

/// Writes a file that was asked for.
Error writeIfNamed(const std::string& path, const QByteArray& text)
{
    Error e;
    if (!path.empty()) {
        ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::open(QString::fromStdString(path)));
        *output << text;
        ZEL_RETURN_IF_ERROR(output->commit());
    }
    return e;
}

io::CommandFiles filesOf(const XlinkOptions& options)
{
    io::CommandFiles files{{}, {QString::fromStdString(options.output)}};
    if (!options.fasta.empty()) {
        files.inputs.append(QString::fromStdString(options.fasta));
    }
    for (const std::string& path : {options.cysteines, options.html, options.peptides}) {
        if (!path.empty()) {
            files.outputs.append(QString::fromStdString(path));
        }
    }
    return files;
}

Error run(const XlinkOptions& options, const CommandContext& /*context*/)
{
    Error e;
    ZEL_RETURN_IF_ERROR(io::checkFiles(filesOf(options)));
    ZEL_ASSIGN_OR_RETURN(const AntibodyChains chains, readChains(options));
    tellOfFewCysteines(chains);
    const QList<Link> links = xlink::AntibodyXlinkPredictor::predict(
        chains[0].sequence, chains[1].sequence, chains[2].sequence, chains[3].sequence);
    ZEL_ASSIGN_OR_RETURN(
        const auto output,
        io::OutputFile::openOrStandardOutput(QString::fromStdString(options.output)));
    *output << linkTable(chains, links);
    ZEL_RETURN_IF_ERROR(output->commit());
    ZEL_RETURN_IF_ERROR(writeIfNamed(options.cysteines, cysteineTable(chains, links)));
    ZEL_RETURN_IF_ERROR(writeIfNamed(options.html, antibodyPage(chains, links)));
    ZEL_RETURN_IF_ERROR(
        writeIfNamed(options.peptides, linkedPeptides(chains, links).serialize().toUtf8()));
    return e;
}

void checkOptions(const XlinkOptions& options)
{
    const bool hasChains = !options.heavy.empty() && !options.light.empty();
    if (hasChains == !options.fasta.empty()) {
        throw CLI::RequiredError("either --fasta, or a heavy and a light chain,");
    }
}

} // namespace

void addXlinkCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<XlinkOptions>();
    CLI::App* const command =
        tool.add_subcommand("xlink", "Predict the disulfide links of an antibody");
    command->add_option("heavy", options->heavy, "Sequence of the heavy chains")
        ->type_name("SEQUENCE");
    command->add_option("light", options->light, "Sequence of the light chains")
        ->type_name("SEQUENCE");
    command->add_option("--heavy2", options->heavy2, "The second heavy chain, if it is another")
        ->type_name("SEQUENCE");
    command->add_option("--light2", options->light2, "The second light chain, if it is another")
        ->type_name("SEQUENCE");
    command
        ->add_option("--fasta",
                     options->fasta,
                     "One or two heavy and light chains instead (FASTA), told apart by the words "
                     "\"heavy\" and \"light\" in their headers, or else by 300 residues")
        ->type_name("FILE");
    command
        ->add_option("-o,--output",
                     options->output,
                     "Table of the links (TSV); standard output if not given")
        ->type_name("FILE");
    command->add_option("--cysteines", options->cysteines, "Table of all cysteines, too")
        ->type_name("FILE");
    command->add_option("--html", options->html, "Picture of the chains and links")
        ->type_name("FILE");
    command
        ->add_option("--peptides",
                     options->peptides,
                     "List of the linked tryptic peptides (JSON), for zel match")
        ->type_name("FILE");
    command->footer("Positions in tables and picture count from 1. The links follow from the order "
                    "of the cysteines alone.");
    command->callback([options, &chosen] {
        checkOptions(*options);
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
