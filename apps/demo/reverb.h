// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

namespace vocafade {

/// Adds a room to `sound` in place: eight delay lines that feed each other (a feedback delay network with a
/// Hadamard matrix), losing 60 dB in `seconds`. Left and right get different lines, so the room is wide; of a
/// sound that is to stay in the middle, use `AddMonoRoom`. `level` is the room's gain.
void AddRoom(StereoSound& sound, int rate, double seconds, float level);
/// The same for one channel.
void AddMonoRoom(std::vector<float>& sound, int rate, double seconds, float level);

} // namespace vocafade
