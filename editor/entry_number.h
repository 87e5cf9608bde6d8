// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vocafade {

// Numbers of the entry fields. The decimal sign is a point whatever locale the host has set for its process.

/// [any-thread] The number that `text` begins with, leading spaces and a sign allowed; 0 when there is none.
/// What is too large counts as the largest number.
double ParseEntryNumber(std::string_view text);

/// [any-thread] `value` with `decimals` places, as printf's "%.*f" in the C locale.
std::string FormatEntryNumber(double value, int decimals);

/// [any-thread] `value` cut to a whole number, held in the range of an int; NaN gives 0.
int TruncateEntryNumber(double value);

} // namespace vocafade
