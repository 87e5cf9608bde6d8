// SPDX-License-Identifier: MIT
#pragma once

#include "persistence/settings_document.h"

#include <functional>
#include <optional>
#include <string>

namespace vocafade {

/// Whose settings, and on which machine.
enum class SettingsScope {
    userAnyHost,     ///< this user's, wherever the home folder is mounted
    userThisHost,    ///< this user's on this machine
    anyUserThisHost, ///< everybody's on this machine
    anyUserAnyHost,  ///< everybody's, wherever the system's folder is mounted
};

/// The settings of one application: a small text file for every scope, in `vocafade/settings/` below the
/// user's configuration folder and below the system's (see settings_places.h). A file, and not a library, since a plug-in shares its process with
/// strangers: a desktop's settings library or a database would bring its own state and services into every
/// host, while all that is asked of it is a few names and values, which people can then read and repair too.
///
/// Any number of processes and threads may use the same settings. A change is a reading, a change and a
/// writing under an advisory lock, so no two lose each other's; the file is replaced as a whole, so a reader
/// and a process that dies see the old or the new one, never a part.
class SettingsStore {
  public:
    explicit SettingsStore(std::string application) : application_(std::move(application)) {}

    /// [main-thread] What is stored in `scope`, empty when nothing is; without a value, and with `errno` set,
    /// when there is a file that cannot be read.
    std::optional<SettingsDocument> Read(SettingsScope scope) const;
    /// [main-thread] Lets `change` change what is stored in `scope`, and stores it. Waits while another
    /// process does the same. False, with `errno` set and everything as it was, when it cannot be stored.
    bool Change(SettingsScope scope, const std::function<void(SettingsDocument&)>& change) const;
    /// [main-thread] The file that holds `scope`, whether or not it is there; empty when there is no place
    /// for it.
    std::string Path(SettingsScope scope) const;

  private:
    std::string application_;
};

} // namespace vocafade
