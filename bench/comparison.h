// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::bench {

/// Runs every form of the engine over the same minute of stereo in blocks of 512, in turns, `rounds` times,
/// and prints each form's least processor time beside its ratio to the plain and to the library form.
void PrintComparison(int rounds);

} // namespace vocafade::bench
