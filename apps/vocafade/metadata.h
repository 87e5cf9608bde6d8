// SPDX-License-Identifier: MIT
#pragma once

#include <sndfile.h>

namespace vocafade::command {

/// Copies what a sound file says about its sound: title, artist and the other tags, broadcast and cart data,
/// cue points, instrument and loops, the channel map, and between files of one kind also the chunks that
/// other programs put there (iXML, ID3, user chunks). What the new format has no place for is left out. To be
/// called before the first sample is written.
void CopyMetadata(SNDFILE* from, const SF_INFO& fromInfo, SNDFILE* to, const SF_INFO& toInfo);

} // namespace vocafade::command
