// SPDX-License-Identifier: MIT
#pragma once

#include "host/effect.h"

#include <string>

namespace vocafade::command {

/// [main-thread] What a window that shows the effect is called: the current program's number and name.
std::string TitleOf(host::Effect& effect);

/// [main-thread] Goes to the program that lies `by` behind the current one; at either end it stays there.
void StepProgram(host::Effect& effect, int by);

/// [main-thread] The programs, counted from 1 and with their names, whose settings or names are not what a new
/// instance of the plug-in starts with, which is what was saved; empty when there are none. Ends with another
/// program than the current one.
std::string UnsavedPrograms(host::Effect& effect);

} // namespace vocafade::command
