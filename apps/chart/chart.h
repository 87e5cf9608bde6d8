// SPDX-License-Identifier: MIT
#pragma once

#include "apps/chart/image.h"
#include "apps/chart/lettering.h"

#include <memory>
#include <string>

namespace vocafade {

constexpr Rgb kPaper{0.985, 0.982, 0.972}; ///< a chart's ground
constexpr Rgb kInk{0.11, 0.13, 0.17};      ///< its text

/// A picture of curves, lines and text that is drawn from the back to the front, in pixels from the upper
/// left corner. One thread at a time.
class Chart {
  public:
    /// Empty paper.
    Chart(int width, int height);

    /// For what has no function here; the current path is empty between two calls.
    cairo_t* context() { return context_.get(); }
    void SetColor(const Rgb& color, double opacity = 1.0);
    void Line(double x1, double y1, double x2, double y2, double width, const Rgb& color);
    void Rectangle(double x, double y, double width, double height, const Rgb& color, double opacity = 1.0);
    /// Copies an image that lies whole inside the chart.
    void Copy(const Image& image, int x, int y);
    /// One line of text around the height `middle`, as `Lettering` draws it; returns its width.
    double Text(const std::string& text, double x, double middle, double pixels, Align align,
                const Rgb& color, bool bold = false);

    /// The chart as a PNG file's bytes. Throws `std::runtime_error` when it cannot be encoded.
    std::string Png() { return EncodePng(surface_.get()); }

  private:
    struct Free {
        void operator()(cairo_surface_t* surface) const;
        void operator()(cairo_t* context) const;
    };
    std::unique_ptr<cairo_surface_t, Free> surface_;
    std::unique_ptr<cairo_t, Free> context_;
    Lettering lettering_;
};

/// A number of Hz as an axis shows it: "400", "1.5k".
std::string HertzLabel(double hz);
/// A number of decibels with a true minus sign.
std::string DecibelLabel(double decibels);

} // namespace vocafade
