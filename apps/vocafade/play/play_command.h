// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// [main-thread] `vocafade play SONG...`: songs through the plug-in to the loudspeakers.
int RunPlay(int argumentCount, char** arguments);

} // namespace vocafade::command
