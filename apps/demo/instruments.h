// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

namespace vocafade {

// Each adds the whole song's part to `mix`, which is as long as the song, at `rate` samples per second.

/// What stands beside the singer: a plucked guitar on the left, an electric piano on the right, a soft pad
/// from side to side and a shaker right of the middle.
void PlaySides(StereoSound& mix, int rate);
/// A bass and a bass drum in the middle; nothing of them reaches 400 Hz.
void PlayMiddle(StereoSound& mix, int rate);

} // namespace vocafade
