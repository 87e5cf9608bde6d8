// SPDX-License-Identifier: MIT
#include "apps/demo/before_after.h"

#include "apps/chart/chart.h"
#include "apps/demo/color_map.h"
#include "apps/demo/spectrogram.h"
#include "apps/demo/stereo_file.h"
#include "base/file_replacement.h"

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace vocafade {
namespace {

constexpr int kWidth = 1400;
constexpr int kHeight = 900;
constexpr int kLeft = 92;
constexpr int kPanelWidth = 1166;
constexpr int kPanelHeight = 356;
constexpr int kTop[2] = {84, 504};
constexpr double kRangeDb = 66.0; // from the loudest place down to what is drawn as silence
constexpr double kLowestHz = 70.0;
constexpr double kHighestHz = 18000.0;

constexpr Rgb kFaint{0.40, 0.42, 0.46};
constexpr Rgb kMark{0.99, 0.72, 0.42};

std::string TimeName(double seconds, bool minutes) {
    char text[32];
    const auto whole = static_cast<long>(std::lround(seconds));
    if (!minutes) {
        std::snprintf(text, sizeof text, "%ld s", whole);
    } else if (whole < 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return text;
}

/// A step of time that gives about ten labels.
double TimeStep(double seconds) {
    for (const double step : {1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 1800.0, 3600.0}) {
        if (seconds / step <= 14.0) return step;
    }
    return 3600.0 * std::ceil(seconds / 3600.0 / 14.0);
}

class BeforeAfterChart {
  public:
    BeforeAfterChart(const Band& band, const FrequencyRange& range, float loudest)
        : band_(band), range_(range), loudest_(loudest) {}

    void DrawTitle(const std::string& title) { chart_.Text(title, kLeft, 32, 21, Align::left, kInk, true); }

    void DrawPanel(const Spectrogram& sound, int top, const std::string& name, const std::string& note) {
        const double width = chart_.Text(name, kLeft, top - 16, 16, Align::left, kInk, true);
        chart_.Text(note, kLeft + width + 14, top - 16, 15, Align::left, kFaint);
        DrawSound(sound, top);
        DrawFrequencies(top);
        DrawBand(top);
        DrawTimes(sound.seconds, top);
    }

    void DrawScale() {
        const int x = kLeft + kPanelWidth + 12;
        const int top = kTop[0] + 82;
        Image scale{14, 132, {}};
        for (int row = 0; row < scale.height; ++row)
            scale.pixels.insert(scale.pixels.end(), static_cast<std::size_t>(scale.width),
                                LevelColor(1.0 - row / (scale.height - 1.0)));
        chart_.Copy(scale, x, top);
        for (int decibels = 0; decibels >= -60; decibels -= 20) {
            const double y = top - decibels / kRangeDb * scale.height;
            chart_.Text(DecibelLabel(decibels), x + 22, std::clamp(y, top + 6.0, top + scale.height - 6.0),
                        12.5, Align::left, kFaint);
        }
        chart_.Text("dB", x + 20, top - 15, 12.5, Align::left, kFaint);
    }

    std::string Png() { return chart_.Png(); }

  private:
    double HeightOf(double hz) const {
        return kPanelHeight * std::log(range_.high / hz) / std::log(range_.high / range_.low);
    }
    bool Shown(double hz) const { return range_.low <= hz && hz <= range_.high; }

    void DrawSound(const Spectrogram& sound, int top) {
        Image image{sound.columns, sound.rows, {}};
        for (const float level : sound.decibels)
            image.pixels.push_back(LevelColor(1.0 + (level - loudest_) / kRangeDb));
        chart_.Copy(image, kLeft, top);
    }

    void DrawFrequencies(int top) {
        for (const double hz : {100.0, 200.0, 500.0, 1000.0, 2000.0, 5000.0, 10000.0}) {
            if (!Shown(hz)) continue;
            const double y = std::floor(top + HeightOf(hz)) + 0.5;
            chart_.Line(kLeft - 6, y, kLeft, y, 1.0, kFaint);
            chart_.Text(HertzLabel(hz), kLeft - 12, y, 13, Align::right, kFaint);
        }
        chart_.Text("Hz", kLeft - 12, top - 10, 13, Align::right, kFaint);
    }

    void DrawBand(int top) {
        const double right = kLeft + kPanelWidth;
        for (const double hz : {band_.lowHz, band_.highHz}) {
            if (!Shown(hz)) continue;
            const double y = std::floor(top + HeightOf(hz)) + 0.5;
            const double dashes[] = {7.0, 6.0};
            cairo_set_dash(chart_.context(), dashes, 2, 0.0);
            chart_.Line(kLeft, y, right, y, 1.0, kMark);
            cairo_set_dash(chart_.context(), nullptr, 0, 0.0);
            chart_.Text(HertzLabel(hz), right + 10, y, 13, Align::left, {0.70, 0.38, 0.08}, true);
        }
    }

    void DrawTimes(double seconds, int top) {
        const double bottom = top + kPanelHeight;
        const double step = TimeStep(seconds);
        const int labels = static_cast<int>(seconds / step);
        for (int label = 0; label <= labels; ++label) {
            const double second = label * step;
            const double x = std::floor(kLeft + kPanelWidth * second / seconds) + 0.5;
            chart_.Line(x, bottom, x, bottom + 6, 1.0, kFaint);
            chart_.Text(TimeName(second, seconds >= 120.0), x, bottom + 17, 13, Align::center, kFaint);
        }
    }

    Chart chart_{kWidth, kHeight};
    Band band_;
    FrequencyRange range_;
    float loudest_;
};

} // namespace

void DrawBeforeAfter(const std::string& beforePath, const std::string& afterPath, const Band& band,
                     double gain, const Captions& captions, const std::string& path) {
    const FrequencyRange range{kLowestHz, std::min(kHighestHz, 0.5 * StereoReader(beforePath).rate())};
    const Spectrogram before = MakeSpectrogram(beforePath, range, kPanelWidth, kPanelHeight);
    Spectrogram after = MakeSpectrogram(afterPath, range, kPanelWidth, kPanelHeight);
    for (float& level : after.decibels)
        level -= static_cast<float>(20.0 * std::log10(gain));
    BeforeAfterChart chart(band, range, std::max(before.Loudest(), after.Loudest()));
    chart.DrawTitle(captions.title);
    chart.DrawPanel(before, kTop[0], "Before", captions.before);
    chart.DrawPanel(after, kTop[1], "After", captions.after);
    chart.DrawScale();
    const std::string png = chart.Png();
    FileReplacement file;
    if (!file.Begin(path) || !file.file().Write(png.data(), png.size()) || !file.Commit())
        throw std::runtime_error(path + ": the picture cannot be written");
}

} // namespace vocafade
