#pragma once

#include <string>

namespace zel::tool {

/// docs/settings.md: the settings of all records in tables.
std::string settingsPage();

} // namespace zel::tool
