// SPDX-License-Identifier: MIT
#pragma once

#include <string>

typedef struct _cairo cairo_t;
typedef struct _PangoFontMap PangoFontMap;
typedef struct _PangoContext PangoContext;

namespace vocafade {

/// A colour, each part from 0 to 1.
struct Rgb {
    double red, green, blue;
};

enum class Align { left, center, right };

/// Sets single lines of text in a chart, in any script that the machine has letters for. It has a font map
/// of its own, so that nothing stays behind it.
class Lettering {
  public:
    Lettering();
    ~Lettering();
    Lettering(const Lettering&) = delete;
    Lettering& operator=(const Lettering&) = delete;

    /// Draws `text` (what is no valid UTF-8 in it is replaced; a long text is shortened in its middle) and
    /// returns its width in pixels. `x` is where `align` says, `middle` the height of the line's middle,
    /// `pixels` the size of the type.
    double Draw(cairo_t* context, const std::string& text, double x, double middle, double pixels, bool bold,
                Align align, const Rgb& color) const;

  private:
    PangoFontMap* map_;
    PangoContext* context_;
};

} // namespace vocafade
