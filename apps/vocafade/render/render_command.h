// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// `vocafade INPUT...`: renders songs, or lists programs or parameters. Answers an `ExitCode`; throws
/// `UsageError` and `Failure`.
int RunRender(int argumentCount, char** arguments);

} // namespace vocafade::command
