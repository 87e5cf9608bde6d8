// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"

#include <cairo/cairo.h>

namespace vocafade::platform::x11 {

/// A picture in memory, drawn into with Cairo.
class ImageSurface : public Surface {
  public:
    /// Takes over `surface`, an image surface of 32-bit pixels with alpha, `size` (logical) at `scale`.
    ImageSurface(cairo_surface_t* surface, CSize size, double scale);
    ~ImageSurface() override;
    ImageSurface(const ImageSurface&) = delete;
    ImageSurface& operator=(const ImageSurface&) = delete;

    int Width() const override { return size_.cx; }
    int Height() const override { return size_.cy; }
    double Scale() const override { return scale_; }
    int DeviceWidth() const override { return deviceSize_.cx; }
    int DeviceHeight() const override { return deviceSize_.cy; }
    std::uint32_t* Pixels() override;
    int Stride() const override { return stride_; }
    void PixelsChanged() override;
    void Fill(std::span<const CRect> where, std::uint32_t rgb) override;
    void Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) override;
    bool WritePng(const char* path) override;

    /// The drawing context, in device pixels and limited to the rectangles, which are logical; give it back
    /// with `cairo_restore`.
    cairo_t* Begin(std::span<const CRect> clip);

  private:
    cairo_surface_t* surface_;
    cairo_t* context_;
    CSize size_;
    CSize deviceSize_;
    double scale_;
    int stride_;
};

} // namespace vocafade::platform::x11
