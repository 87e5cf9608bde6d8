// SPDX-License-Identifier: MIT
#include "apps/chart/lettering.h"

#include "base/utf8.h"

#include <memory>
#include <pango/pangocairo.h>

namespace vocafade {

Lettering::Lettering() : map_(pango_cairo_font_map_new()), context_(pango_font_map_create_context(map_)) {}

Lettering::~Lettering() {
    g_object_unref(context_);
    g_object_unref(map_);
}

double Lettering::Draw(cairo_t* context, const std::string& text, double x, double middle, double pixels,
                       bool bold, Align align, const Rgb& color) const {
    constexpr int kWidestPixels = 1000;
    pango_cairo_update_context(context, context_);
    const std::unique_ptr<PangoLayout, decltype(&g_object_unref)> layout(pango_layout_new(context_),
                                                                         &g_object_unref);
    PangoFontDescription* font = pango_font_description_from_string("Inter, DejaVu Sans, Sans");
    pango_font_description_set_absolute_size(font, pixels * PANGO_SCALE);
    pango_font_description_set_weight(font, bold ? PANGO_WEIGHT_SEMIBOLD : PANGO_WEIGHT_NORMAL);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    const std::string valid = ValidUtf8(text);
    pango_layout_set_text(layout.get(), valid.data(), static_cast<int>(valid.size()));
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_MIDDLE);
    pango_layout_set_width(layout.get(), kWidestPixels * PANGO_SCALE);
    PangoRectangle extents;
    pango_layout_get_pixel_extents(layout.get(), nullptr, &extents);
    const double shift = align == Align::left ? 0.0 : align == Align::center ? 0.5 : 1.0;
    cairo_set_source_rgb(context, color.red, color.green, color.blue);
    cairo_move_to(context, x - shift * extents.width - extents.x, middle - 0.5 * extents.height - extents.y);
    pango_cairo_show_layout(context, layout.get());
    return extents.width;
}

} // namespace vocafade
