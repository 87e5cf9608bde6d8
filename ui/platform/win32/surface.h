// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"

#include <windows.h>

namespace vocafade::platform::win32 {

/// A picture in memory that the system can put onto windows, and draw text into.
class DibSurface : public Surface {
  public:
    /// Null when there is no memory for it.
    static std::unique_ptr<DibSurface> Make(CSize size, CSize deviceSize, double scale);
    ~DibSurface() override;
    DibSurface(const DibSurface&) = delete;
    DibSurface& operator=(const DibSurface&) = delete;

    int Width() const override { return size_.cx; }
    int Height() const override { return size_.cy; }
    double Scale() const override { return scale_; }
    int DeviceWidth() const override { return device_.cx; }
    int DeviceHeight() const override { return device_.cy; }
    std::uint32_t* Pixels() override;
    int Stride() const override { return device_.cx; }
    void PixelsChanged() override {}
    void Fill(std::span<const CRect> where, std::uint32_t rgb) override;
    void Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) override;
    bool WritePng(const char* path) override;

    /// The logical rectangle in device pixels, as far as it lies on this surface.
    CRect OnDevice(const CRect& logical) const;
    HBITMAP bitmap() const { return bitmap_; }

  private:
    DibSurface(CSize size, CSize deviceSize, double scale)
        : size_(size), device_(deviceSize), scale_(scale) {}

    CSize size_;
    CSize device_;
    double scale_;
    HBITMAP bitmap_ = nullptr;
    std::uint32_t* pixels_ = nullptr;
};

/// The system's drawing calls on a surface, to the end of the scope.
class BitmapDc {
  public:
    explicit BitmapDc(const DibSurface& surface)
        : dc_(::CreateCompatibleDC(nullptr)), before_(::SelectObject(dc_, surface.bitmap())) {}
    ~BitmapDc() {
        ::SelectObject(dc_, before_);
        ::DeleteDC(dc_);
    }
    BitmapDc(const BitmapDc&) = delete;
    BitmapDc& operator=(const BitmapDc&) = delete;

    operator HDC() const { return dc_; }

  private:
    HDC dc_;
    HGDIOBJ before_;
};

/// A colour component of 8 bits, times a share of 255.
constexpr std::uint32_t Share(std::uint32_t component, std::uint32_t of255) {
    const std::uint32_t t = component * of255 + 128;
    return (t + (t >> 8)) >> 8;
}

/// `above`, premultiplied with its alpha, over `below`.
constexpr std::uint32_t Over(std::uint32_t above, std::uint32_t below) {
    const std::uint32_t clear = 255 - (above >> 24);
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8)
        result |= std::min(255U, (above >> shift & 0xFF) + Share(below >> shift & 0xFF, clear)) << shift;
    return result;
}

} // namespace vocafade::platform::win32
