#pragma once

#include <string>

namespace CLI {
class App;
}

namespace zel::tool {

/// Scripts that complete commands, options and their values on a command line.
std::string bashCompletion(const CLI::App& tool);
std::string zshCompletion(const CLI::App& tool);

} // namespace zel::tool
