// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade settings [SECTION [ENTRY [VALUE]]]`: shows and changes what is in the settings store. Answers an
/// `ExitCode`; throws `UsageError` and `Failure`.
int RunSettings(int argumentCount, char** arguments);

} // namespace vocafade::command
