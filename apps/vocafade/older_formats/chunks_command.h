// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade chunks FILE`: lists an AIFF file's chunks, and reads and writes what the user chunk holds.
/// Answers an `ExitCode`; throws `UsageError` and `Failure`.
int RunChunks(int argumentCount, char** arguments);

} // namespace vocafade::command
