// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace vocafade::command {

/// What the terminal shows while a song plays.
struct PlayState {
    std::string title;
    double seconds = 0.0;
    double length = 0.0; ///< seconds, 0 when it is not known
    std::array<float, 2> peaks{};
    bool paused = false;
    bool voiceOut = true;
    int gaps = 0;
};

/// The line, at most `width` columns: time, bar, levels in dB below full scale, what is set, title.
std::string PlayLine(const PlayState& state, std::size_t width);

} // namespace vocafade::command
