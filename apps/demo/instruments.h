// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

namespace vocafade {

// The accompaniment, each instrument at its place in the stereo picture. Each function adds its whole part of
// the song into `mix`, which is as long as the song, at `rate` samples per second.

/// A plucked guitar on the left: a string is a delay line that loses its brightness as it rings
/// (Karplus and Strong's method).
void PlayGuitar(StereoSound& mix, int rate);
/// An electric piano on the right: two pairs of sines, one bending the other's phase.
void PlayElectricPiano(StereoSound& mix, int rate);
/// A soft pad from side to side: each channel has its own slightly detuned voices.
void PlayPad(StereoSound& mix, int rate);
/// A shaker, right of the middle.
void PlayShaker(StereoSound& mix, int rate);
/// A bass in the middle; nothing of it reaches 400 Hz.
void PlayBass(StereoSound& mix, int rate);
/// A bass drum in the middle; nothing of it reaches 400 Hz.
void PlayDrum(StereoSound& mix, int rate);

} // namespace vocafade
