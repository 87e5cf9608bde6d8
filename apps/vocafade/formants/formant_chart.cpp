// SPDX-License-Identifier: MIT
#include "apps/vocafade/formants/formant_chart.h"

#include "apps/chart/chart.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/subcommand_line.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <cmath>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr int kWidth = 1280, kHeight = 720;
constexpr double kLeft = 78, kRight = 1250, kTop = 96, kBottom = 650;
constexpr double kAxisFromHz = 50, kAxisToHz = 20000;
constexpr double kRangeDb = 90; // from the loudest down to the lower edge

constexpr Rgb kFaint{0.42, 0.44, 0.48};
constexpr Rgb kGrid{0.86, 0.86, 0.85}, kSpectrum{0.66, 0.70, 0.76}, kMiddle{0.80, 0.27, 0.16};
constexpr Rgb kSide{0.16, 0.42, 0.60}, kBand{0.96, 0.80, 0.45};

class FormantChart {
  public:
    explicit FormantChart(const FormantAnalysis& analysis)
        : analysis_(analysis), highest_(std::min(kAxisToHz, analysis.rate / 2.0)) {
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
        chart_.Text(title, kLeft, 30, 20, Align::left, kInk, true);
        chart_.Text(fmt::format("at {:.3f} s, {} points, order {}", analysis_.seconds, analysis_.points,
                                analysis_.order),
                    kRight, 30, 14, Align::right, kFaint);
        DrawLegend();
        DrawBand();
        DrawGrid();
        Clip();
        DrawCurve(analysis_.middle, kSpectrum, 1.0);
        DrawCurve(analysis_.sideEnvelope, kSide, 2.2);
        DrawCurve(analysis_.middleEnvelope, kMiddle, 3.0);
        cairo_reset_clip(chart_.context());
        DrawPeaks();
        return chart_.Png();
    }

  private:
    double X(double hz) const {
        return kLeft + std::log(std::max(hz, 1.0) / kAxisFromHz) / std::log(highest_ / kAxisFromHz) *
                           (kRight - kLeft);
    }
    double Y(double decibels) const { return kTop + (top_ - decibels) / kRangeDb * (kBottom - kTop); }

    void Clip() {
        cairo_rectangle(chart_.context(), kLeft, kTop, kRight - kLeft, kBottom - kTop);
        cairo_clip(chart_.context());
    }

    void DrawLegend() {
        double x = kLeft;
        const auto item = [&](const Rgb& color, double width, const char* name) {
            chart_.Line(x, 64, x + 26, 64, width, color);
            x += 34 + chart_.Text(name, x + 34, 64, 14, Align::left, kInk) + 26;
        };
        item(kMiddle, 3.0, "envelope of the middle");
        if (!analysis_.sideEnvelope.empty()) item(kSide, 2.2, "envelope of the sides");
        item(kSpectrum, 1.0, "spectrum of the middle");
        if (analysis_.bandFromHz) {
            chart_.Rectangle(x, 56, 26, 16, kBand, 0.45);
            chart_.Text(fmt::format("the middle leads: {} to {} Hz", HertzLabel(*analysis_.bandFromHz),
                                    HertzLabel(*analysis_.bandToHz)),
                        x + 34, 64, 14, Align::left, kInk);
        }
    }

    void DrawBand() {
        if (!analysis_.bandFromHz) return;
        const double from = std::max(X(*analysis_.bandFromHz), kLeft),
                     to = std::min(X(*analysis_.bandToHz), kRight);
        chart_.Rectangle(from, kTop, to - from, kBottom - kTop, kBand, 0.28);
    }

    void DrawGrid() {
        for (const double hz : {50.0, 100.0, 200.0, 500.0, 1000.0, 2000.0, 5000.0, 10000.0, 20000.0}) {
            if (hz > highest_) continue;
            const double x = std::round(X(hz)) + 0.5;
            chart_.Line(x, kTop, x, kBottom, 1.0, kGrid);
            chart_.Text(HertzLabel(hz), x, kBottom + 18, 13.5, Align::center, kFaint);
        }
        for (int line = 0; line <= static_cast<int>(kRangeDb) / 10; ++line) {
            const double decibels = top_ - 10.0 * line;
            const double y = std::round(Y(decibels)) + 0.5;
            chart_.Line(kLeft, y, kRight, y, 1.0, kGrid);
            chart_.Text(DecibelLabel(decibels), kLeft - 10, y, 13.5, Align::right, kFaint);
        }
        chart_.Text("Hz", kRight, kBottom + 44, 13.5, Align::right, kFaint);
        chart_.Text("dB", kLeft - 10, kTop - 20, 13.5, Align::right, kFaint);
    }

    void DrawCurve(const std::vector<float>& curve, const Rgb& color, double width) {
        if (curve.empty()) return;
        chart_.SetColor(color);
        cairo_set_line_width(chart_.context(), width);
        cairo_set_line_join(chart_.context(), CAIRO_LINE_JOIN_ROUND);
        for (std::size_t k = 1; k < curve.size(); ++k) {
            cairo_line_to(chart_.context(), X(analysis_.Hz(k)), Y(curve[k]));
        }
        cairo_stroke(chart_.context());
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
            chart_.SetColor(kPaper);
            cairo_arc(chart_.context(), x, y, 5.0, 0.0, 6.2832);
            cairo_fill_preserve(chart_.context());
            chart_.SetColor(kMiddle);
            cairo_set_line_width(chart_.context(), 2.0);
            cairo_stroke(chart_.context());
            if (std::any_of(named.begin(), named.end(),
                            [x](double other) { return std::abs(other - x) < 52.0; }))
                continue;
            named.push_back(x);
            chart_.Text(HertzLabel(peak.hz), x, std::max(y - 20.0, kTop + 10.0), 14, Align::center, kInk,
                        true);
        }
    }

    const FormantAnalysis& analysis_;
    const double highest_;
    double top_ = 0.0; // dB at the upper edge
    Chart chart_{kWidth, kHeight};
};

} // namespace

void DrawFormants(const FormantAnalysis& analysis, const std::string& title, const std::string& path) {
    WriteWhole(path, FormantChart(analysis).Draw(title));
}

} // namespace vocafade::command
