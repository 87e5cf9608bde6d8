// SPDX-License-Identifier: MIT
#include "base/utf8.h"
#include "ui/platform/platform.h"
#include "ui/platform/x11/surface.h"

#include <cmath>
#include <fontconfig/fontconfig.h>
#include <hb.h>
#include <mutex>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

namespace vocafade::platform {
namespace x11 {
namespace {

/// The fonts of all editors in this library. Pango's own default map is the host's as well, so this is
/// another one. It stays from the first text to the library's unloading: each new map costs Fontconfig and
/// Pango some hundred bytes that they never give back. Text is a main-thread matter, but hosts exist that
/// give each editor a thread: all use of Pango is under one lock, which nobody else waits for.
class FontMap {
  public:
    FontMap() : map_(pango_cairo_font_map_new()), context_(pango_font_map_create_context(map_)) {
        pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map_), 96.0);
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
        pango_cairo_context_set_font_options(context_, options);
        cairo_font_options_destroy(options);
        pango_context_set_round_glyph_positions(context_, TRUE);
    }
    ~FontMap() {
        g_object_unref(context_);
        g_object_unref(map_);
    }
    FontMap(const FontMap&) = delete;
    FontMap& operator=(const FontMap&) = delete;

    PangoContext* context() const { return context_; }

    static std::mutex& Lock() {
        static std::mutex lock;
        return lock;
    }
    /// Under the lock.
    static std::shared_ptr<FontMap> Get() {
        static std::shared_ptr<FontMap> map = std::make_shared<FontMap>();
        return map;
    }

  private:
    PangoFontMap* map_;
    PangoContext* context_;
};

/// The font whose PostScript name that is ("DejaVuSans-Bold"), else the family of that name, for which Pango
/// finds the nearest.
PangoFontDescription* Describe(const std::string& name) {
    PangoFontDescription* description = nullptr;
    FcPattern* wanted = FcPatternCreate();
    FcPatternAddString(wanted, FC_POSTSCRIPT_NAME, reinterpret_cast<const FcChar8*>(name.c_str()));
    FcObjectSet* told =
        FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, FC_WIDTH, static_cast<const char*>(nullptr));
    FcFontSet* found = FcFontList(nullptr, wanted, told);
    if (found != nullptr && found->nfont > 0)
        description = pango_fc_font_description_from_pattern(found->fonts[0], FALSE);
    if (found != nullptr) FcFontSetDestroy(found);
    FcObjectSetDestroy(told);
    FcPatternDestroy(wanted);
    if (description == nullptr) {
        description = pango_font_description_new();
        pango_font_description_set_family(description, name.c_str());
    }
    return description;
}

class PangoTextFont : public Font {
  public:
    PangoTextFont(std::shared_ptr<FontMap> map, std::string_view name, double pixels, double scale)
        : map_(std::move(map)), scale_(scale) {
        PangoFontDescription* description = Describe(std::string(name));
        pango_font_description_set_absolute_size(description, pixels * scale * PANGO_SCALE);
        layout_ = pango_layout_new(map_->context());
        pango_layout_set_font_description(layout_, description);
        pango_layout_set_single_paragraph_mode(layout_, TRUE);
        Measure(description, pixels);
        pango_font_description_free(description);
    }
    ~PangoTextFont() override {
        const std::scoped_lock lock(FontMap::Lock());
        g_object_unref(layout_);
        map_.reset();
    }
    PangoTextFont(const PangoTextFont&) = delete;
    PangoTextFont& operator=(const PangoTextFont&) = delete;

    double BoundingHeight() const override { return boundingHeight_; }
    double Ascent() const override { return ascent_; }
    double Descent() const override { return descent_; }

    double Width(std::string_view text) override {
        const std::scoped_lock lock(FontMap::Lock());
        SetText(text);
        int width = 0;
        pango_layout_get_size(layout_, &width, nullptr);
        return PANGO_PIXELS_CEIL(width) / scale_;
    }

    std::vector<double> CaretStops(std::string_view text) override {
        const std::scoped_lock lock(FontMap::Lock());
        SetText(text);
        std::vector<double> stops;
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (i < text.size() && !StartsCharacter(text[i])) continue;
            PangoRectangle strong;
            pango_layout_get_cursor_pos(layout_, static_cast<int>(i), &strong, nullptr);
            stops.push_back(PANGO_PIXELS(strong.x) / scale_);
        }
        return stops;
    }

    void Draw(Surface& target, double x, double baseline, std::string_view text, std::uint32_t rgb,
              std::span<const CRect> clip) override {
        const std::scoped_lock lock(FontMap::Lock());
        SetText(text);
        cairo_t* c = static_cast<ImageSurface&>(target).Begin(clip);
        cairo_set_source_rgb(c, ((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0,
                             (rgb & 0xFF) / 255.0);
        const double scale = target.Scale();
        cairo_translate(c, std::floor(x * scale + 0.5), std::floor(baseline * scale + 0.5));
        if (scale != scale_) cairo_scale(c, scale / scale_, scale / scale_);
        cairo_move_to(c, 0, 0);
        pango_cairo_show_layout_line(c, pango_layout_get_line_readonly(layout_, 0));
        cairo_restore(c);
    }

  private:
    /// Laying text out costs far more than comparing it, and a text is mostly measured and then drawn.
    void SetText(std::string_view text) {
        if (text == text_) return;
        text_ = text;
        pango_layout_set_text(layout_, text_.data(), static_cast<int>(text_.size()));
    }

    /// The font's own figures, not the hinted ones, so that the baseline does not depend on the rasteriser.
    void Measure(const PangoFontDescription* description, double pixels) {
        ascent_ = pixels * 0.8;
        descent_ = pixels * 0.2;
        boundingHeight_ = pixels;
        PangoFont* font = pango_context_load_font(map_->context(), description);
        if (font == nullptr) return;
        if (hb_font_t* shape = pango_font_get_hb_font(font)) {
            hb_face_t* face = hb_font_get_face(shape);
            const unsigned unitsPerEm = hb_face_get_upem(face);
            int scale = 0;
            hb_font_get_scale(shape, nullptr, &scale);
            hb_font_extents_t extents{};
            if (scale != 0 && hb_font_get_h_extents(shape, &extents) != 0) {
                ascent_ = pixels * extents.ascender / scale;
                descent_ = pixels * -extents.descender / scale;
            }
            boundingHeight_ = ascent_ + descent_;
            // The font header: yMin and yMax are signed 16-bit big-endian numbers at bytes 38 and 42.
            hb_blob_t* head = hb_face_reference_table(face, HB_TAG('h', 'e', 'a', 'd'));
            unsigned length = 0;
            const auto* bytes = reinterpret_cast<const unsigned char*>(hb_blob_get_data(head, &length));
            if (length >= 44 && unitsPerEm != 0) {
                const auto at = [bytes](int i) {
                    return static_cast<std::int16_t>((bytes[i] << 8) | bytes[i + 1]);
                };
                boundingHeight_ = (at(42) - at(38)) * pixels / unitsPerEm;
            }
            hb_blob_destroy(head);
        }
        g_object_unref(font);
    }

    std::shared_ptr<FontMap> map_;
    PangoLayout* layout_ = nullptr;
    std::string text_;
    double ascent_ = 0;
    double descent_ = 0;
    double boundingHeight_ = 0;
    double scale_; ///< that the text is laid out at
};

} // namespace
} // namespace x11

std::shared_ptr<Font> OpenFont(std::string_view name, double pixels, double scale) {
    const std::scoped_lock lock(x11::FontMap::Lock());
    return std::make_shared<x11::PangoTextFont>(x11::FontMap::Get(), name, pixels, scale);
}

std::string BaseLetter(std::string_view character) {
    gunichar base = 0;
    g_unichar_fully_decompose(g_utf8_get_char(std::string(character).c_str()), FALSE, &base, 1);
    char bytes[6];
    return {bytes, static_cast<std::size_t>(g_unichar_to_utf8(base, bytes))};
}

} // namespace vocafade::platform
