// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// [main-thread] `vocafade edit`: the plug-in's editor in a window of its own, until the user closes it.
int RunEdit(int argumentCount, char** arguments);

/// [main-thread] `vocafade screenshot OUT.png`: a picture of the editor.
int RunScreenshot(int argumentCount, char** arguments);

} // namespace vocafade::command
