// SPDX-License-Identifier: MIT
#pragma once

#include "persistence/aiff_layout.h"

namespace vocafade {

/// [main-thread] Writes the sizes of a plain AIFF file whose form ends at `formEnd` and whose chunks are
/// those of `layout`: first the sound's, then the frame count, the form's last, since until then a reader
/// keeps to what was there before. Frame count and sound size change only where they were not those of
/// the sound. Sizes above 4 GiB wrap. False when the disk did not take them.
bool WriteAiffSizes(CFile& file, const AiffLayout& layout, std::int64_t formEnd);

} // namespace vocafade
