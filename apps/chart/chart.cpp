// SPDX-License-Identifier: MIT
#include "apps/chart/chart.h"

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstdio>

namespace vocafade {

void Chart::Free::operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
void Chart::Free::operator()(cairo_t* context) const { cairo_destroy(context); }

Chart::Chart(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      context_(cairo_create(surface_.get())) {
    SetColor(kPaper);
    cairo_paint(context());
}

void Chart::SetColor(const Rgb& color, double opacity) {
    cairo_set_source_rgba(context(), color.red, color.green, color.blue, opacity);
}

void Chart::Line(double x1, double y1, double x2, double y2, double width, const Rgb& color) {
    SetColor(color);
    cairo_set_line_width(context(), width);
    cairo_new_path(context());
    cairo_move_to(context(), x1, y1);
    cairo_line_to(context(), x2, y2);
    cairo_stroke(context());
}

void Chart::Rectangle(double x, double y, double width, double height, const Rgb& color, double opacity) {
    SetColor(color, opacity);
    cairo_new_path(context());
    cairo_rectangle(context(), x, y, width, height);
    cairo_fill(context());
}

void Chart::Copy(const Image& image, int x, int y) {
    cairo_surface_flush(surface_.get());
    unsigned char* rows = cairo_image_surface_get_data(surface_.get());
    const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface_.get());
    for (int row = 0; row < image.height; ++row)
        std::copy_n(image.pixels.begin() + static_cast<std::ptrdiff_t>(row) * image.width, image.width,
                    reinterpret_cast<std::uint32_t*>(rows + (y + row) * stride) + x);
    cairo_surface_mark_dirty(surface_.get());
}

double Chart::Text(const std::string& text, double x, double middle, double pixels, Align align,
                   const Rgb& color, bool bold) {
    const double width = lettering_.Draw(context(), text, x, middle, pixels, bold, align, color);
    cairo_new_path(context()); // text leaves a point behind
    return width;
}

std::string HertzLabel(double hz) {
    char text[32];
    if (hz < 999.5) {
        std::snprintf(text, sizeof text, "%.0f", hz);
    } else {
        std::snprintf(text, sizeof text, "%gk", std::round(hz / 10.0) / 100.0);
    }
    return text;
}

std::string DecibelLabel(double decibels) {
    char text[32];
    std::snprintf(text, sizeof text, "%s%.0f", decibels < 0.0 ? "\u2212" : "", std::fabs(decibels));
    return text;
}

} // namespace vocafade
