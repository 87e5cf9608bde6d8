// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <numeric>
#include <system_error>
#include <vector>

namespace vocafade::command {
namespace {

/// How many letters must be added, dropped, changed or swapped with their neighbour to turn `a` into `b`.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> above(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(above.begin(), above.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = above[j - 1] + (a[i - 1] != b[j - 1] ? 1 : 0);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, changed});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(above);
        above.swap(row);
    }
    return above[b.size()];
}

} // namespace

std::string ClockTime(double seconds) {
    const std::int64_t whole = seconds > 0.0 && std::isfinite(seconds) ? std::llround(seconds) : 0;
    if (whole >= 3600) return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

std::string ByteCount(double bytes) {
    if (bytes < 1e3) return fmt::format("{:.0f} bytes", bytes);
    if (bytes < 1e6) return fmt::format("{:.1f} kB", bytes / 1e3);
    if (bytes < 1e9) return fmt::format("{:.1f} MB", bytes / 1e6);
    return fmt::format("{:.1f} GB", bytes / 1e9);
}

std::string Printable(std::string_view text) {
    std::string safe(text);
    for (char& letter : safe)
        if (static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F) letter = '?';
    return safe;
}

std::string SystemReason(int error) { return std::generic_category().message(error); }

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
}

std::string NearestName(std::string_view typed, std::span<const std::string> known) {
    const std::string wanted = LowerCase(typed);
    std::string nearest;
    std::size_t least = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    for (const std::string& name : known) {
        const std::string candidate = LowerCase(name);
        std::size_t distance = EditDistance(wanted, candidate);
        if (wanted.size() >= 2 && candidate.starts_with(wanted))
            distance = std::min<std::size_t>(distance, 1);
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

std::string DidYouMean(std::string_view typed, std::span<const std::string> known) {
    const std::string nearest = NearestName(typed, known);
    return nearest.empty() ? std::string() : " Did you mean " + nearest + "?";
}

} // namespace vocafade::command
