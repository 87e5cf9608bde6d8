// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace vocafade {

/// Sings the song's melody: one channel, from the song's first beat to its end, at `rate` samples per second.
/// A formant synthesiser: a source with vibrato, breath and small unsteadiness, and a chain of five
/// vocal-tract resonances that glide from sound to sound.
std::vector<float> Sing(int rate);

} // namespace vocafade
