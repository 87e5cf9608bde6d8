// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::bench {

/// Runs every form of the engine over the same minute of stereo in blocks of 512, in short turns, `rounds`
/// times, and prints each form's processor time beside its ratio to the plain and to the library form. Each
/// turn counts with its least time, so that what else the machine does falls out.
void PrintComparison(int rounds);

} // namespace vocafade::bench
