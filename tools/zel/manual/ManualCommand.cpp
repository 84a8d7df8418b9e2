#include "tools/io/OutputFile.h"
#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/manual/Completion.h"
#include "tools/zel/manual/ManPage.h"
#include "tools/zel/manual/SettingsPage.h"

#include <memory>

namespace zel::tool {

namespace {

struct ManualOptions
{
    std::string page;
    std::string output;
};

Error run(const CLI::App& tool, const ManualOptions& options)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(
        const auto output,
        io::OutputFile::openOrStandardOutput(QString::fromStdString(options.output)));
    const std::string text = options.page == "man"    ? manPage(tool)
                             : options.page == "bash" ? bashCompletion(tool)
                             : options.page == "zsh"  ? zshCompletion(tool)
                                                      : settingsPage();
    *output << QByteArray::fromStdString(text);
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

} // namespace

void addManualCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<ManualOptions>();
    CLI::App* const command =
        tool.add_subcommand("manual", "Print what is made from the descriptions of all options")
            ->group(""); // hidden: for the build
    command->add_option("page", options->page, "What to print")
        ->required()
        ->check(isOneOf({"man", "bash", "zsh", "settings"}));
    command->add_option("-o,--output", options->output, "File; standard output if not given")
        ->type_name("FILE");
    command->callback([options, &chosen, &tool] {
        chosen = [options, &tool](const CommandContext& /*context*/) {
            return run(tool, *options);
        };
    });
}

} // namespace zel::tool
