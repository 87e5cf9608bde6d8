// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <span>
#include <string>
#include <string_view>

namespace vocafade::command {

/// "3:05" or "1:02:03"; seconds are rounded to the nearest, negative and unreal ones read "0:00".
std::string ClockTime(double seconds);

/// "812 bytes", "6.4 MB", "1.2 GB" (decimal units, as shops and file managers use them).
std::string ByteCount(double bytes);

/// The text with control characters shown as "?", so that a file's name cannot steer the terminal.
std::string Printable(std::string_view text);

/// What the system says of an error number, by default of the last that it gave.
std::string SystemReason(int error = errno);

/// ASCII lower case.
std::string LowerCase(std::string_view text);

/// The name among `known` that `typed` was probably meant to be (case aside, at most a third of it mistyped),
/// or empty.
std::string NearestName(std::string_view typed, std::span<const std::string> known);

/// " Did you mean NAME?", or empty when there is no near name.
std::string DidYouMean(std::string_view typed, std::span<const std::string> known);

} // namespace vocafade::command
