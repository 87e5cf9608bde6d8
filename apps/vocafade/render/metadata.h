// SPDX-License-Identifier: MIT
#pragma once

#include <sndfile.h>

namespace vocafade::command {

/// Copies what a sound file says about its sound: broadcast and cart data, cue points, instrument and loops,
/// the channel map, and with `withTexts` title, artist and the other tags. What the new format has no place
/// for is left out. To be called before the first sample is written.
void CopyMetadata(SNDFILE* from, const SF_INFO& fromInfo, SNDFILE* to, bool withTexts);

} // namespace vocafade::command
