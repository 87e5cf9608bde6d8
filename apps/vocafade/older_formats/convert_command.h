// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade convert LIST -o BANK.fxb`: an older program list with its program files as a bank. Answers an
/// `ExitCode`; throws `UsageError` and `Failure`.
int RunConvert(int argumentCount, char** arguments);

} // namespace vocafade::command
