// SPDX-License-Identifier: MIT
#pragma once

#include "apps/demo/stereo_file.h"

namespace vocafade {

/// A song together with the parts that it is the sum of.
struct Song {
    StereoSound mix;
    StereoSound voice; ///< the same in both channels
    StereoSound rest;  ///< bass and drum in the middle below 400 Hz, everything else to the sides
    int rate = 0;
};

/// Makes the demonstration's song, 27.6 s of stereo at `rate` samples per second: played and sung by this program
/// alone, from no recording, the same every time. Peaks stay 3 dB below full scale.
Song MakeSong(int rate);

// Its parts; what plays adds to `mix`, which is as long as the song.

/// Beside the singer: a plucked guitar on the left, an electric piano on the right, a soft pad from side to
/// side and a shaker right of the middle.
void PlaySides(StereoSound& mix, int rate);
/// A bass and a bass drum in the middle; nothing of them reaches 400 Hz.
void PlayMiddle(StereoSound& mix, int rate);
/// The melody, the same in both channels, as long as the song.
StereoSound Sing(int rate);

} // namespace vocafade
