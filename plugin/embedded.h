// SPDX-License-Identifier: MIT
#pragma once

#include "ui/resources.h"

#include <span>
#include <string_view>

namespace vocafade {

/// [any-thread] Copies of the bitmaps, made when the plug-in was built.
std::span<const EmbeddedFile> EmbeddedBitmaps();
/// [any-thread] The string table's file: lines of number, tab and text.
std::string_view EmbeddedStrings();

} // namespace vocafade
