// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"

#include <optional>
#include <string>

namespace vocafade {

// What the system says of where settings are. Everything here is [any-thread] but for the lock.

/// The user's configuration folder as it is found now: `$XDG_CONFIG_HOME`, or `~/.config`; on Windows the roaming
/// folder for applications, `%APPDATA%`. Empty when there is none.
std::string FindConfigurationFolder();

/// The same for all users: the first of `$XDG_CONFIG_DIRS`, or `/etc/xdg`; on Windows `%ProgramData%`.
std::string SystemConfigurationFolder();

/// What tells this machine from others that mount the same folders.
std::string NameOfMachine();

/// [any-thread] The name of the running program, whose settings are meant when nobody is named: for a plug-in
/// that is its host. Nothing when the system does not tell.
std::optional<std::string> CurrentApplication();

/// [main-thread] Opens the lock file `path` as `file` and waits until nobody else holds it. It is given back when
/// `file` is closed, even by a process that is killed. False when it cannot be had.
bool HoldLock(CFile& file, const std::string& path);

} // namespace vocafade
