// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/play_line.h"

#include "apps/vocafade/shared/text.h"
#include "base/utf8.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <string_view>

namespace vocafade::command {
namespace {

/// Columns that a terminal gives a character: two to those of East Asian scripts and to pictures.
std::size_t ColumnsOf(char32_t character) {
    constexpr std::pair<char32_t, char32_t> kNone[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x3099, 0x309A}};
    constexpr std::pair<char32_t, char32_t> kWide[] = {
        {0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
        {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
    const auto within = [character](const auto& range) {
        return character >= range.first && character <= range.second;
    };
    if (std::any_of(std::begin(kNone), std::end(kNone), within)) return 0;
    return std::any_of(std::begin(kWide), std::end(kWide), within) ? 2 : 1;
}

/// As much of a text as fits.
std::string Fitting(std::string_view text, std::size_t width) {
    std::string fitting;
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        const std::size_t columns = ColumnsOf(character);
        if (columns > width) break;
        width -= columns;
        fitting += ToUtf8(character);
    }
    return fitting;
}

std::string LevelText(float peak) {
    constexpr double kLowest = -60.0;
    return fmt::format("{:3.0f}", peak > 0.0f ? std::max(kLowest, 20.0 * std::log10(peak)) : kLowest);
}

} // namespace

std::string PlayLine(const PlayState& state, std::size_t width) {
    constexpr std::size_t kBar = 20;
    std::string line = ClockTime(std::floor(state.seconds));
    if (state.length > 0.0) {
        const double share = std::clamp(state.seconds / state.length, 0.0, 1.0);
        const auto full = static_cast<std::size_t>(share * kBar);
        line += fmt::format(" / {} [{}{}]", ClockTime(state.length), std::string(full, '#'),
                            std::string(kBar - full, '.'));
    }
    line += fmt::format(" {} {} dB  voice {}", LevelText(state.peaks[0]), LevelText(state.peaks[1]),
                        state.voiceOut ? "out" : "in");
    if (state.paused) line += "  paused";
    if (state.gaps > 0) line += fmt::format("  {} gap{}", state.gaps, state.gaps == 1 ? "" : "s");
    return Fitting(line + "  " + Printable(state.title), width);
}

} // namespace vocafade::command
