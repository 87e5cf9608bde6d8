// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vocafade::host::fake {

/// What a fake effect was asked and what its host answered, for the tests to read.
struct Log {
    std::vector<std::int32_t> opcodes;
    std::vector<std::string> answers; ///< "question=answer", asked while the effect was being made
    std::int32_t processCalls = 0;
    std::int64_t positionSeen = -1; ///< samples, by the host's time at the last block
    std::intptr_t levelSeen = -1;   ///< process level at the last block
};

/// Exported by every fake as `FakeLog`. One a shared object.
using LogFunction = Log* (*)();

inline constexpr std::int32_t kId = 0x46616B65; // "Fake"

} // namespace vocafade::host::fake
