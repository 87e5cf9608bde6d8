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

/// Makes the demonstration's song, about 27 s of stereo: played and sung by this program alone, from no
/// recording, the same every time. Peaks stay 3 dB below full scale.
Song MakeSong(int rate);

} // namespace vocafade
