// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace vocafade {

/// Sings the song's melody: one channel, from the song's first beat to its end, at `rate` samples per second.
/// A formant synthesiser: a glottal source with vibrato, breath and small unsteadiness, a chain of five
/// vocal-tract resonances that glide from sound to sound, and hiss for the consonants.
std::vector<float> Sing(int rate);

} // namespace vocafade
