#pragma once

#include "common/stable/Error.h"
#include "tools/sources/decorators/ScanProgress.h"

#include <QSharedPointer>

#include <functional>

namespace CLI {
class App;
}

namespace zel::tool {

/// What a command runs with.
struct CommandContext
{
    QSharedPointer<msreader::ScanProgress> progress;
    bool verbose = false; ///< failures are reported with all that is known
};

/// The work of a command; its Error becomes the tool's error line and exit code.
using CommandAction = std::function<Error(const CommandContext&)>;

// Each declares its command's arguments and, when the command is chosen, sets `chosen` to its work.
void addDigestCommand(CLI::App& tool, CommandAction& chosen);
void addFeaturesCommand(CLI::App& tool, CommandAction& chosen);
void addInfoCommand(CLI::App& tool, CommandAction& chosen);
void addManualCommand(CLI::App& tool, CommandAction& chosen);
void addMatchCommand(CLI::App& tool, CommandAction& chosen);
void addSimulateCommand(CLI::App& tool, CommandAction& chosen);
void addTargetedCommand(CLI::App& tool, CommandAction& chosen);
void addXicCommand(CLI::App& tool, CommandAction& chosen);
void addXimCommand(CLI::App& tool, CommandAction& chosen);
void addXlinkCommand(CLI::App& tool, CommandAction& chosen);

} // namespace zel::tool
