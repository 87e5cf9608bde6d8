// SPDX-License-Identifier: MIT
#include "apps/demo/picture.h"

#include "apps/demo/color_map.h"
#include "apps/demo/spectrogram.h"
#include "apps/demo/stereo_file.h"
#include "apps/lettering/lettering.h"
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

constexpr Rgb kPaper{0.985, 0.982, 0.972};
constexpr Rgb kInk{0.11, 0.13, 0.17};
constexpr Rgb kFaint{0.40, 0.42, 0.46};
constexpr Rgb kMark{0.99, 0.72, 0.42};

void SetColor(cairo_t* context, const Rgb& color, double opacity = 1.0) {
    cairo_set_source_rgba(context, color.red, color.green, color.blue, opacity);
}

std::string FrequencyName(double hz) {
    char text[32];
    if (hz < 1000.0) {
        std::snprintf(text, sizeof text, "%.0f Hz", hz);
    } else {
        std::snprintf(text, sizeof text, "%g kHz", std::round(hz / 10.0) / 100.0);
    }
    return text;
}

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

class Picture {
  public:
    Picture(const Band& band, const FrequencyRange& range, float loudest)
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight)),
          context_(cairo_create(surface_)), band_(band), range_(range), loudest_(loudest) {
        SetColor(context_, kPaper);
        cairo_paint(context_);
    }
    ~Picture() {
        cairo_destroy(context_);
        cairo_surface_destroy(surface_);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    void DrawTitle(const std::string& title) {
        lettering_.Draw(context_, title, kLeft, 32, 21, true, Align::left, kInk);
    }

    void DrawPanel(const Spectrogram& sound, int top, const std::string& name, const std::string& note) {
        const double width = lettering_.Draw(context_, name, kLeft, top - 16, 16, true, Align::left, kInk);
        lettering_.Draw(context_, note, kLeft + width + 14, top - 16, 15, false, Align::left, kFaint);
        DrawSound(sound, top);
        DrawFrequencies(top);
        DrawBand(top);
        DrawTimes(sound.seconds, top);
    }

    void DrawScale() {
        const double x = kLeft + kPanelWidth + 12;
        const double top = kTop[0] + 82;
        const double height = 132;
        for (int y = 0; y < static_cast<int>(height); ++y) {
            const std::uint32_t color = LevelColor(1.0 - y / (height - 1.0));
            cairo_set_source_rgb(context_, (color >> 16) / 255.0, (color >> 8 & 255U) / 255.0,
                                 (color & 255U) / 255.0);
            cairo_rectangle(context_, x, top + y, 14, 1);
            cairo_fill(context_);
        }
        for (int decibels = 0; decibels >= -60; decibels -= 20) {
            lettering_.Draw(context_, (decibels < 0 ? "\u2212" : "") + std::to_string(std::abs(decibels)),
                            x + 22, std::clamp(top - decibels / kRangeDb * height, top + 6, top + height - 6),
                            12.5, false, Align::left, kFaint);
        }
        lettering_.Draw(context_, "dB", x + 20, top - 15, 12.5, false, Align::left, kFaint);
    }

    void Save(const std::string& path) {
        FileReplacement file;
        const bool begun = file.Begin(path);
        cairo_surface_flush(surface_);
        const auto write = [](void* target, const unsigned char* data, unsigned count) {
            return static_cast<CFile*>(target)->Write(data, count) ? CAIRO_STATUS_SUCCESS
                                                                   : CAIRO_STATUS_WRITE_ERROR;
        };
        if (!begun ||
            cairo_surface_write_to_png_stream(surface_, write, &file.file()) != CAIRO_STATUS_SUCCESS ||
            !file.Commit()) {
            throw std::runtime_error(path + ": the picture cannot be written");
        }
    }

  private:
    double HeightOf(double hz) const {
        return kPanelHeight * std::log(range_.high / hz) / std::log(range_.high / range_.low);
    }
    bool Shown(double hz) const { return range_.low <= hz && hz <= range_.high; }

    void DrawSound(const Spectrogram& sound, int top) {
        cairo_surface_flush(surface_);
        const int stride = cairo_image_surface_get_stride(surface_);
        unsigned char* pixels = cairo_image_surface_get_data(surface_);
        for (int row = 0; row < sound.rows; ++row) {
            auto* line =
                reinterpret_cast<std::uint32_t*>(pixels + static_cast<std::ptrdiff_t>(top + row) * stride);
            for (int column = 0; column < sound.columns; ++column)
                line[kLeft + column] = LevelColor(1.0 + (sound.At(column, row) - loudest_) / kRangeDb);
        }
        cairo_surface_mark_dirty(surface_);
    }

    void Line(double x1, double y1, double x2, double y2) {
        cairo_move_to(context_, x1, y1);
        cairo_line_to(context_, x2, y2);
        cairo_stroke(context_);
    }

    void DrawFrequencies(int top) {
        cairo_set_line_width(context_, 1.0);
        for (const double hz : {100.0, 200.0, 500.0, 1000.0, 2000.0, 5000.0, 10000.0}) {
            if (!Shown(hz)) continue;
            const double y = std::floor(top + HeightOf(hz)) + 0.5;
            SetColor(context_, kFaint);
            Line(kLeft - 6, y, kLeft, y);
            lettering_.Draw(context_, FrequencyName(hz), kLeft - 12, y, 13, false, Align::right, kFaint);
        }
    }

    void DrawBand(int top) {
        const double right = kLeft + kPanelWidth;
        for (const double hz : {band_.lowHz, band_.highHz}) {
            if (!Shown(hz)) continue;
            const double y = std::floor(top + HeightOf(hz)) + 0.5;
            const double dashes[] = {7.0, 6.0};
            cairo_set_dash(context_, dashes, 2, 0.0);
            cairo_set_line_width(context_, 1.0);
            SetColor(context_, kMark, 0.85);
            Line(kLeft, y, right, y);
            cairo_set_dash(context_, nullptr, 0, 0.0);
            lettering_.Draw(context_, FrequencyName(hz), right + 10, y, 13, true, Align::left,
                            {0.70, 0.38, 0.08});
        }
    }

    void DrawTimes(double seconds, int top) {
        const double bottom = top + kPanelHeight;
        const double step = TimeStep(seconds);
        cairo_set_line_width(context_, 1.0);
        const int labels = static_cast<int>(seconds / step);
        for (int label = 0; label <= labels; ++label) {
            const double second = label * step;
            const double x = std::floor(kLeft + kPanelWidth * second / seconds) + 0.5;
            SetColor(context_, kFaint);
            Line(x, bottom, x, bottom + 6);
            lettering_.Draw(context_, TimeName(second, seconds >= 120.0), x, bottom + 17, 13, false,
                            Align::center, kFaint);
        }
    }

    cairo_surface_t* surface_;
    cairo_t* context_;
    Lettering lettering_;
    Band band_;
    FrequencyRange range_;
    float loudest_;
};

} // namespace

void DrawBeforeAfter(const std::string& beforePath, const std::string& afterPath, const Band& band,
                     double gain, const PictureText& text, const std::string& picturePath) {
    const FrequencyRange range{kLowestHz, std::min(kHighestHz, 0.5 * StereoReader(beforePath).rate())};
    const Spectrogram before = MakeSpectrogram(beforePath, range, kPanelWidth, kPanelHeight);
    Spectrogram after = MakeSpectrogram(afterPath, range, kPanelWidth, kPanelHeight);
    for (float& level : after.decibels)
        level -= static_cast<float>(20.0 * std::log10(gain));
    Picture picture(band, range, std::max(before.Loudest(), after.Loudest()));
    picture.DrawTitle(text.title);
    picture.DrawPanel(before, kTop[0], "Before", text.before);
    picture.DrawPanel(after, kTop[1], "After", text.after);
    picture.DrawScale();
    picture.Save(picturePath);
}

} // namespace vocafade
