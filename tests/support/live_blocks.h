// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::test {

/// Blocks of memory that this process has allocated and not freed, by whatever library. -1 in builds with a
/// sanitizer, which has an allocator, and a leak check, of its own.
long LiveBlocks();

} // namespace vocafade::test
