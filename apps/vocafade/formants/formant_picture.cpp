// SPDX-License-Identifier: MIT
#include "apps/vocafade/formants/formant_picture.h"

#include "apps/lettering/lettering.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/subcommand_line.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <cmath>
#include <fmt/format.h>
#include <memory>

namespace vocafade::command {
namespace {

constexpr double kWidth = 1280, kHeight = 720;
constexpr double kLeft = 78, kRight = 1250, kTop = 96, kBottom = 650;
constexpr double kLowestHz = 50, kHighestHz = 20000;
constexpr double kRangeDb = 90; // from the loudest down to the lower edge

constexpr Rgb kPaper{0.985, 0.982, 0.972}, kInk{0.11, 0.13, 0.17}, kFaint{0.42, 0.44, 0.48};
constexpr Rgb kGrid{0.86, 0.86, 0.85}, kSpectrum{0.66, 0.70, 0.76}, kMiddle{0.80, 0.27, 0.16};
constexpr Rgb kSide{0.16, 0.42, 0.60}, kBand{0.96, 0.80, 0.45};

class Canvas {
  public:
    Canvas()
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(kWidth),
                                              static_cast<int>(kHeight)),
                   cairo_surface_destroy),
          context_(cairo_create(surface_.get()), cairo_destroy) {
        Use(kPaper);
        cairo_paint(get());
    }

    cairo_t* get() { return context_.get(); }
    void Use(const Rgb& color, double opacity = 1.0) {
        cairo_set_source_rgba(get(), color.red, color.green, color.blue, opacity);
    }
    void Line(double x1, double y1, double x2, double y2, double width, const Rgb& color) {
        Use(color);
        cairo_set_line_width(get(), width);
        cairo_move_to(get(), x1, y1);
        cairo_line_to(get(), x2, y2);
        cairo_stroke(get());
    }
    /// One line of text around `middle`; returns its width.
    double Text(const std::string& text, double x, double middle, double pixels, Align align,
                const Rgb& color, bool bold = false) {
        return lettering_.Draw(get(), text, x, middle, pixels, bold, align, color);
    }
    std::string Png() {
        std::string bytes;
        const auto append = [](void* target, const unsigned char* data, unsigned int length) {
            static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
            return CAIRO_STATUS_SUCCESS;
        };
        if (cairo_surface_write_to_png_stream(surface_.get(), append, &bytes) != CAIRO_STATUS_SUCCESS)
            throw Failure("the picture cannot be drawn");
        return bytes;
    }

  private:
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context_;
    Lettering lettering_;
};

std::string HzName(double hz) {
    if (hz < 999.5) return fmt::format("{:.0f}", hz);
    return fmt::format("{:g}k", std::round(hz / 10.0) / 100.0);
}

class FormantPicture {
  public:
    explicit FormantPicture(const FormantAnalysis& analysis)
        : analysis_(analysis), highest_(std::min(kHighestHz, analysis.rate / 2.0)) {
        const auto loudest = [](const std::vector<float>& curve) {
            return curve.empty() ? -200.0
                                 : static_cast<double>(*std::max_element(curve.begin() + 1, curve.end()));
        };
        top_ =
            10.0 *
            std::ceil((std::max({loudest(analysis.middle), loudest(analysis.sideEnvelope), -120.0}) + 4.0) /
                      10.0);
    }

    std::string Draw(const std::string& title) {
        canvas_.Text(title, kLeft, 30, 20, Align::left, kInk, true);
        canvas_.Text(fmt::format("at {:.3f} s, {} points, order {}", analysis_.seconds, analysis_.points,
                                 analysis_.order),
                     kRight, 30, 14, Align::right, kFaint);
        DrawLegend();
        DrawBand();
        DrawGrid();
        Clip();
        DrawCurve(analysis_.middle, kSpectrum, 1.0);
        DrawCurve(analysis_.sideEnvelope, kSide, 2.2);
        DrawCurve(analysis_.middleEnvelope, kMiddle, 3.0);
        cairo_reset_clip(canvas_.get());
        DrawPeaks();
        return canvas_.Png();
    }

  private:
    double X(double hz) const {
        return kLeft +
               std::log(std::max(hz, 1.0) / kLowestHz) / std::log(highest_ / kLowestHz) * (kRight - kLeft);
    }
    double Y(double decibels) const { return kTop + (top_ - decibels) / kRangeDb * (kBottom - kTop); }

    void Clip() {
        cairo_rectangle(canvas_.get(), kLeft, kTop, kRight - kLeft, kBottom - kTop);
        cairo_clip(canvas_.get());
    }

    void DrawLegend() {
        double x = kLeft;
        const auto item = [&](const Rgb& color, double width, const char* name) {
            canvas_.Line(x, 64, x + 26, 64, width, color);
            x += 34 + canvas_.Text(name, x + 34, 64, 14, Align::left, kInk) + 26;
        };
        item(kMiddle, 3.0, "envelope of the middle");
        if (!analysis_.sideEnvelope.empty()) item(kSide, 2.2, "envelope of the sides");
        item(kSpectrum, 1.0, "spectrum of the middle");
        if (analysis_.bandFromHz) {
            canvas_.Use(kBand, 0.45);
            cairo_rectangle(canvas_.get(), x, 56, 26, 16);
            cairo_fill(canvas_.get());
            canvas_.Text(fmt::format("the middle leads: {} to {} Hz", HzName(*analysis_.bandFromHz),
                                     HzName(*analysis_.bandToHz)),
                         x + 34, 64, 14, Align::left, kInk);
        }
    }

    void DrawBand() {
        if (!analysis_.bandFromHz) return;
        const double from = std::max(X(*analysis_.bandFromHz), kLeft),
                     to = std::min(X(*analysis_.bandToHz), kRight);
        canvas_.Use(kBand, 0.28);
        cairo_rectangle(canvas_.get(), from, kTop, to - from, kBottom - kTop);
        cairo_fill(canvas_.get());
    }

    void DrawGrid() {
        for (const double hz : {50.0, 100.0, 200.0, 500.0, 1000.0, 2000.0, 5000.0, 10000.0, 20000.0}) {
            if (hz > highest_) continue;
            const double x = std::round(X(hz)) + 0.5;
            canvas_.Line(x, kTop, x, kBottom, 1.0, kGrid);
            canvas_.Text(HzName(hz), x, kBottom + 18, 13.5, Align::center, kFaint);
        }
        for (int line = 0; line <= static_cast<int>(kRangeDb) / 10; ++line) {
            const double decibels = top_ - 10.0 * line;
            const double y = std::round(Y(decibels)) + 0.5;
            canvas_.Line(kLeft, y, kRight, y, 1.0, kGrid);
            canvas_.Text(fmt::format("{}{:.0f}", decibels < 0 ? "\u2212" : "", std::abs(decibels)),
                         kLeft - 10, y, 13.5, Align::right, kFaint);
        }
        canvas_.Text("Hz", kRight, kBottom + 44, 13.5, Align::right, kFaint);
        canvas_.Text("dB", kLeft - 10, kTop - 20, 13.5, Align::right, kFaint);
    }

    void DrawCurve(const std::vector<float>& curve, const Rgb& color, double width) {
        if (curve.empty()) return;
        canvas_.Use(color);
        cairo_set_line_width(canvas_.get(), width);
        cairo_set_line_join(canvas_.get(), CAIRO_LINE_JOIN_ROUND);
        for (std::size_t k = 1; k < curve.size(); ++k) {
            cairo_line_to(canvas_.get(), X(analysis_.Hz(k)), Y(curve[k]));
        }
        cairo_stroke(canvas_.get());
    }

    /// Marks every peak; names those whose names do not run into one another, the loudest first.
    void DrawPeaks() {
        std::vector<FormantPeak> peaks = analysis_.peaks;
        std::sort(peaks.begin(), peaks.end(),
                  [](const auto& a, const auto& b) { return a.decibels > b.decibels; });
        std::vector<double> named;
        for (const FormantPeak& peak : peaks) {
            const double x = X(peak.hz), y = Y(peak.decibels);
            if (x > kRight || y > kBottom) continue;
            canvas_.Use(kPaper);
            cairo_new_path(canvas_.get()); // text leaves a point behind
            cairo_arc(canvas_.get(), x, y, 5.0, 0.0, 6.2832);
            cairo_fill_preserve(canvas_.get());
            canvas_.Use(kMiddle);
            cairo_set_line_width(canvas_.get(), 2.0);
            cairo_stroke(canvas_.get());
            if (std::any_of(named.begin(), named.end(),
                            [x](double other) { return std::abs(other - x) < 52.0; }))
                continue;
            named.push_back(x);
            canvas_.Text(HzName(peak.hz), x, std::max(y - 20.0, kTop + 10.0), 14, Align::center, kInk, true);
        }
    }

    const FormantAnalysis& analysis_;
    const double highest_;
    double top_ = 0.0; // dB at the upper edge
    Canvas canvas_;
};

} // namespace

void DrawFormants(const FormantAnalysis& analysis, const std::string& title, const std::string& path) {
    WriteWhole(path, FormantPicture(analysis).Draw(title));
}

} // namespace vocafade::command
