// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vocafade {

/// [any-thread] The user's configuration folder as it is found now: `$XDG_CONFIG_HOME`, or `~/.config`; empty
/// when there is neither.
std::string FindConfigurationFolder();

/// [main-thread] Looks the user's preferences folder up anew (`$XDG_CONFIG_HOME/`, or `~/.config/`) and keeps
/// it for the process, with a "/" at its end. When it cannot be found, or is longer than 2047 bytes, what was
/// kept before stays.
void GetMy_SHFOLDER_PathName();

/// [any-thread] The folder that was kept, ending in "/"; empty when none was ever found.
std::string SettingsFolder();

} // namespace vocafade
