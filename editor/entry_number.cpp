// SPDX-License-Identifier: MIT
#include "editor/entry_number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace vocafade {

double ParseEntryNumber(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return 0.0;
    text.remove_prefix(first);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr double kLargest = std::numeric_limits<double>::max();
    if (error == std::errc::result_out_of_range) {
        // Either end of the range; only what is too large has digits before the point.
        const bool negative = text[0] == '-';
        const char lead = text.size() > (negative ? 1U : 0U) ? text[negative ? 1 : 0] : '0';
        if (lead == '0' || lead == '.') return 0.0;
        return negative ? -kLargest : kLargest;
    }
    if (error != std::errc() || std::isnan(value)) return 0.0;
    return std::clamp(value, -kLargest, kLargest);
}

std::string FormatEntryNumber(double value, int decimals) {
    std::array<char, 512> text; // the largest double has 309 digits before the point
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                            std::chars_format::fixed, std::clamp(decimals, 0, 99));
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

int TruncateEntryNumber(double value) {
    if (std::isnan(value)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

} // namespace vocafade
