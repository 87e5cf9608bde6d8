// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::bench {

/// Feeds fresh instances of the plug-in the same million blocks of 64 samples, `rounds` times, and prints the
/// heaviest call against one hop's work. What the machine does on the side falls on another call in each
/// round; what the plug-in does falls on the same one. So a call's time is its least over all rounds.
void PrintHeaviestCall(int rounds);

} // namespace vocafade::bench
