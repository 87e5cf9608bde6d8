// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// [main-thread] `vocafade open`: what the desktop's entry starts. Plays the songs that it is given, and without any is
/// `vocafade live --default`. Where nobody reads the standard error, what goes wrong is shown as a notification.
int RunOpen(int argumentCount, char** arguments);

} // namespace vocafade::command
