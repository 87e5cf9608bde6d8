// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/check.h"

namespace vocafade::validate {

// How the process of a check ends when it could carry it out, whatever it found, and when the plug-in cannot be loaded
// at all; the finding then says why. No C library and no sanitizer ends a process with these.
inline constexpr int kDone = 0;
inline constexpr int kUnusable = 90;

/// Does what the process of a check is there for, with its findings in `notes`: one of the numbers above.
int CarryOut(const Check& check, Subject& subject, Notes& notes);

} // namespace vocafade::validate
