#pragma once

#include <string>

namespace CLI {
class App;
}

namespace zel::tool {

/// The manual page of the tool with all its commands, for man(1).
std::string manPage(const CLI::App& tool);

} // namespace zel::tool
