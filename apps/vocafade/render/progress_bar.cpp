// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/progress_bar.h"

#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr double kTrustAfter = 0.5; // seconds: an earlier guess at the time left is wild
constexpr std::size_t kWidestBar = 40;

} // namespace

std::string ProgressLine(double done, double secondsSoFar, std::size_t songsDone, std::size_t songs,
                         std::size_t width) {
    done = std::clamp(done, 0.0, 1.0);
    std::string text = fmt::format("] {:3.0f} %", done * 100.0);
    if (secondsSoFar >= kTrustAfter && done > 0.0)
        text += fmt::format("  {} left", ClockTime(secondsSoFar / done - secondsSoFar));
    if (songs > 1) text += fmt::format("  {} of {} songs", songsDone, songs);
    if (text.size() + 4 > width) return text.substr(2, width);
    const std::size_t bar = std::min(kWidestBar, width - text.size() - 2);
    const auto full = static_cast<std::size_t>(done * static_cast<double>(bar));
    return fmt::format("[{}{}{}", std::string(full, '#'), std::string(bar - full, '.'), text);
}

} // namespace vocafade::command
