// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"

#include <cairo/cairo.h>

namespace vocafade::platform::x11 {

/// A picture in memory, drawn into with Cairo.
class ImageSurface : public Surface {
  public:
    /// Takes over `surface`, an image surface of 32-bit pixels with alpha.
    explicit ImageSurface(cairo_surface_t* surface);
    ~ImageSurface() override;
    ImageSurface(const ImageSurface&) = delete;
    ImageSurface& operator=(const ImageSurface&) = delete;

    int Width() const override { return width_; }
    int Height() const override { return height_; }
    std::uint32_t* Pixels() override;
    int Stride() const override { return stride_; }
    void PixelsChanged() override;
    void Fill(std::span<const CRect> where, std::uint32_t rgb) override;
    void Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) override;
    bool WritePng(const char* path) override;

    /// The drawing context, limited to the rectangles; give it back with `cairo_restore`.
    cairo_t* Begin(std::span<const CRect> clip);

  private:
    cairo_surface_t* surface_;
    cairo_t* context_;
    int width_;
    int height_;
    int stride_;
};

} // namespace vocafade::platform::x11
