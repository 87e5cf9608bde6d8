// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

#include <vector>

namespace vocafade {

// The song's parts, at `rate` samples per second; what plays adds to `mix`, which is as long as the song.

/// What stands beside the singer: a plucked guitar on the left, an electric piano on the right, a soft pad
/// from side to side and a shaker right of the middle.
void PlaySides(StereoSound& mix, int rate);
/// A bass and a bass drum in the middle; nothing of them reaches 400 Hz.
void PlayMiddle(StereoSound& mix, int rate);
/// The melody, in one channel. A formant synthesiser: a source with vibrato, breath and small unsteadiness,
/// and a chain of five vocal-tract resonances that glide from sound to sound.
std::vector<float> Sing(int rate);

} // namespace vocafade
