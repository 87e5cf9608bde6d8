// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade formants FILE`: the spectral envelope of a moment of a song, as a table and a picture. Answers
/// an `ExitCode`; throws `UsageError` and `Failure`.
int RunFormants(int argumentCount, char** arguments);

} // namespace vocafade::command
