// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::test {

// Programs that link counted_memory.cpp count under malloc itself, so nothing gets past it: whatever library asks.
// In builds with a sanitizer, which has an allocator and a leak check of its own, both are -1.

/// Blocks of memory that this process has allocated and not freed.
long LiveBlocks();

/// How often the calling thread has asked for memory since it began.
long AllocationsOfThread();

} // namespace vocafade::test
