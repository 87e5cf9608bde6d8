// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vocafade {

/// [main-thread] Looks the user's preferences folder up anew (see `FindConfigurationFolder`) and
/// keeps it for the process, with a "/" at its end. When it cannot be found, or is longer than 2047 bytes, what was
/// kept before stays.
void GetMy_SHFOLDER_PathName();

/// [any-thread] The folder that was kept, ending in "/"; empty when none was ever found.
std::string SettingsFolder();

} // namespace vocafade
