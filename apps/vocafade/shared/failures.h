// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace vocafade::command {

/// How the command ends.
enum ExitCode : int {
    kExitFine = 0,
    kExitFailed = 1, ///< some file could not be done
    kExitUsage = 2,  ///< the command line makes no sense; nothing was begun
};

/// What the user asked for cannot be meant: ends the command with `kExitUsage`.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A file, the plug-in or the system stood in the way: ends one file with this sentence.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The user stopped the run.
class Interrupted : public std::runtime_error {
  public:
    Interrupted() : std::runtime_error("interrupted") {}
};

} // namespace vocafade::command
