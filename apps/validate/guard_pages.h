// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/notes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vocafade::validate {

/// Bytes of a page of memory.
std::size_t PageBytes();

/// `bytes` of memory, a multiple of pages, whose first and last page nobody may touch; null when there is none.
char* MapBetweenGuards(std::size_t bytes);
void Unmap(char* memory, std::size_t bytes);

/// From now on a crash first adds a finding to `notes`: how, and which guard page was touched if it was one. The
/// process then dies as it would have.
void InstallCrashReport(Notes& notes);

/// What `InstallCrashReport` adds at that moment, without the heap: `how` it crashed and, where that is known, the
/// address that it `touched`, else 0.
void AddCrash(Notes& notes, std::string_view how, std::uintptr_t touched);

} // namespace vocafade::validate
