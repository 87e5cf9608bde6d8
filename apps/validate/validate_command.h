// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade validate ...`: tries a plug-in in every way that hosts and faults know, and prints what it tried
/// and what failed. Answers an `ExitCode`: 1 when anything failed.
int RunValidate(int argumentCount, char** arguments);

} // namespace vocafade::command
