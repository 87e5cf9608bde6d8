// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// [main-thread] `vocafade live`: an output device without lead voices, until the user ends it.
int RunLive(int argumentCount, char** arguments);

} // namespace vocafade::command
