// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/reporter.h"

#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/terminal.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <numeric>
#include <utility>

namespace vocafade::command {
namespace {

constexpr std::chrono::milliseconds kRedraw{100};
constexpr std::size_t kWidestBar = 40;
constexpr double kTrustAfter = 0.5; // seconds: an earlier guess at the time left is wild

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

Reporter::Reporter(bool quiet, std::vector<double> weights)
    : quiet_(quiet), bar_(!quiet && HasStatusLine()), weights_(std::move(weights)),
      done_(weights_.size(), 0.0), begin_(std::chrono::steady_clock::now()), lastDraw_(begin_) {}

Reporter::~Reporter() { Erase(); }

void Reporter::Progress(std::size_t index, double done) {
    if (!bar_) return;
    const std::lock_guard lock(mutex_);
    done_[index] = std::clamp(done, 0.0, 1.0);
    if (std::chrono::steady_clock::now() - lastDraw_ >= kRedraw) Draw();
}

void Reporter::Skip(std::size_t index) {
    const std::lock_guard lock(mutex_);
    weights_[index] = 0.0;
}

void Reporter::Over(std::size_t index) {
    const std::lock_guard lock(mutex_);
    done_[index] = 1.0;
    ++over_;
    // Songs that are there already come by the thousand.
    if (bar_ && over_ < done_.size() && std::chrono::steady_clock::now() - lastDraw_ >= kRedraw) Draw();
}

void Reporter::Line(const std::string& text) {
    if (quiet_) return;
    const std::lock_guard lock(mutex_);
    Erase();
    PrintText(text + "\n");
    FlushOutput();
}

void Reporter::Warning(const std::string& text) {
    if (quiet_) return;
    const std::lock_guard lock(mutex_);
    Erase();
    PrintError(fmt::format("vocafade: warning: {}\n", text));
}

void Reporter::Error(const std::string& text) {
    const std::lock_guard lock(mutex_);
    Erase();
    PrintError(fmt::format("vocafade: {}\n", text));
}

void Reporter::Draw() {
    const auto now = std::chrono::steady_clock::now();
    lastDraw_ = now;
    drawn_ = true;
    const double all = std::accumulate(weights_.begin(), weights_.end(), 0.0);
    const double done = std::inner_product(weights_.begin(), weights_.end(), done_.begin(), 0.0);
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const std::string line =
        ProgressLine(all > 0.0 ? done / all : 0.0, seconds, over_, done_.size(), StatusWidth() - 1);
    PrintError(kClearLine + line);
}

void Reporter::Erase() {
    if (!drawn_) return;
    drawn_ = false;
    PrintError(kClearLine);
}

} // namespace vocafade::command
