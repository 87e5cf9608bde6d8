// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vocafade::host::fake {

/// What a fake effect was asked and what its host answered, for the tests to read.
struct Log {
    std::vector<std::int32_t> opcodes;
    std::vector<std::string> answers; ///< "question=answer", asked while the effect was being made
    /// For each block: where the song is by the host's time, in samples, and the process level.
    std::vector<std::pair<std::int64_t, std::intptr_t>> blocks;
};

/// Exported by every fake as `FakeLog`. One a shared object.
using LogFunction = Log* (*)();

/// A small VST 2.4 effect that halves the sound and writes down what its host does; its texts and chunks break the rules.
AEffect* Make(audioMasterCallback host);

inline constexpr std::int32_t kId = 0x46616B65; // "Fake"

} // namespace vocafade::host::fake
