// SPDX-License-Identifier: MIT
#include "ui/platform/win32/surface.h"

#include "ui/platform/scale.h"

#include <cmath>

namespace vocafade::platform {
namespace win32 {
namespace {

constexpr int kLongestSurface = 16384; ///< device pixels
/// Above this many pixels of the source for one drawn, several places are taken for each, so that none is left out.
constexpr double kFinestBilinear = 1.35;

/// Between which pixels of a row or column of the source a place lies, and how near to the second.
struct Place {
    int first;
    int second;
    std::uint32_t weight; ///< of the second, of 255
};

/// For each pixel drawn from `begin` to `end`, the places that it is made of, the same number for each.
struct Places {
    Places(int begin, int end, double origin, double ratio, int low, int high) {
        count = ratio > kFinestBilinear ? static_cast<int>(std::ceil(ratio)) : 1;
        all.reserve(static_cast<std::size_t>(end - begin) * static_cast<std::size_t>(count));
        for (int at = begin; at < end; ++at) {
            for (int i = 0; i < count; ++i) {
                const double within = (i + 0.5) / count;
                const double place = std::clamp((at + within) * ratio + origin - 0.5, low + 0.0, high - 1.0);
                const int first = static_cast<int>(place);
                all.push_back({first, std::min(first + 1, high - 1),
                               static_cast<std::uint32_t>(std::lround((place - first) * 255))});
            }
        }
    }
    std::span<const Place> Of(int index) const {
        return std::span(all).subspan(static_cast<std::size_t>(index * count),
                                      static_cast<std::size_t>(count));
    }

    int count;
    std::vector<Place> all;
};

std::uint32_t Mix(std::uint32_t a, std::uint32_t b, std::uint32_t weight) {
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8)
        result |= (Share(a >> shift & 0xFF, 255 - weight) + Share(b >> shift & 0xFF, weight)) << shift;
    return result;
}

/// The mean of what is between the pixels at these places.
std::uint32_t Sample(const std::uint32_t* pixels, int stride, std::span<const Place> columns,
                     std::span<const Place> rows) {
    std::uint32_t sums[4] = {};
    std::uint32_t colour = 0;
    for (const Place& y : rows) {
        const std::uint32_t* upper = pixels + static_cast<std::ptrdiff_t>(y.first) * stride;
        const std::uint32_t* lower = pixels + static_cast<std::ptrdiff_t>(y.second) * stride;
        for (const Place& x : columns) {
            colour = Mix(Mix(upper[x.first], upper[x.second], x.weight),
                         Mix(lower[x.first], lower[x.second], x.weight), y.weight);
            for (int i = 0; i < 4; ++i)
                sums[i] += colour >> (8 * i) & 0xFF;
        }
    }
    const auto count = static_cast<std::uint32_t>(columns.size() * rows.size());
    if (count == 1) return colour;
    std::uint32_t mean = 0;
    for (int i = 0; i < 4; ++i)
        mean |= (sums[i] + count / 2) / count << (8 * i);
    return mean;
}

} // namespace

std::unique_ptr<DibSurface> DibSurface::Make(CSize size, CSize deviceSize, double scale) {
    std::unique_ptr<DibSurface> surface(new DibSurface(size, deviceSize, scale));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = deviceSize.cx;
    info.bmiHeader.biHeight = -deviceSize.cy; // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    surface->bitmap_ = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    surface->pixels_ = static_cast<std::uint32_t*>(pixels);
    return pixels != nullptr ? std::move(surface) : nullptr;
}

DibSurface::~DibSurface() {
    if (bitmap_ != nullptr) ::DeleteObject(bitmap_);
}

std::uint32_t* DibSurface::Pixels() {
    ::GdiFlush();
    return pixels_;
}

CRect DibSurface::OnDevice(const CRect& logical) const {
    CRect inside;
    inside.IntersectRect(ToDevice(logical, scale_), {{0, 0}, device_});
    return inside;
}

void DibSurface::Fill(std::span<const CRect> where, std::uint32_t rgb) {
    std::uint32_t* pixels = Pixels();
    for (const CRect& logical : where) {
        const CRect r = OnDevice(logical);
        for (int y = r.top; y < r.bottom; ++y)
            std::fill_n(pixels + static_cast<std::ptrdiff_t>(y) * Stride() + r.left, r.Width(),
                        0xFF000000 | rgb);
    }
}

void DibSurface::Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) {
    auto& image = static_cast<DibSurface&>(source);
    const CRect in = image.OnDevice(from);
    const CRect out = ToDevice(to, scale_);
    if (in.IsRectEmpty() || out.IsRectEmpty()) return;
    const bool sameSize = from.Size() == to.Size();
    const bool copied = sameSize && (in.Size() == out.Size() || image.scale_ == scale_);
    // Where in the source a pixel lies: its own place times the ratio, and the origin.
    double ratioX = static_cast<double>(in.Width()) / out.Width();
    double ratioY = static_cast<double>(in.Height()) / out.Height();
    double originX = in.left - out.left * ratioX;
    double originY = in.top - out.top * ratioY;
    if (sameSize) {
        // The exact place, wherever the edges were rounded to.
        ratioX = ratioY = image.scale_ / scale_;
        originX = (from.left - to.left) * image.scale_;
        originY = (from.top - to.top) * image.scale_;
    }
    std::uint32_t* pixels = Pixels();
    const std::uint32_t* taken = image.Pixels();
    for (const CRect& logical : clip) {
        CRect r;
        if (!r.IntersectRect(OnDevice(logical), out)) continue;
        if (copied) {
            for (int y = r.top; y < r.bottom; ++y) {
                const int row = in.top + std::clamp(y - out.top, 0, in.Height() - 1);
                const std::uint32_t* pixel = taken + static_cast<std::ptrdiff_t>(row) * image.Stride();
                std::uint32_t* drawn = pixels + static_cast<std::ptrdiff_t>(y) * Stride();
                for (int x = r.left; x < r.right; ++x)
                    drawn[x] = Over(pixel[in.left + std::clamp(x - out.left, 0, in.Width() - 1)], drawn[x]);
            }
            continue;
        }
        const Places columns(r.left, r.right, originX, ratioX, in.left, in.right);
        const Places rows(r.top, r.bottom, originY, ratioY, in.top, in.bottom);
        for (int y = r.top; y < r.bottom; ++y) {
            std::uint32_t* drawn = pixels + static_cast<std::ptrdiff_t>(y) * Stride();
            for (int x = r.left; x < r.right; ++x)
                drawn[x] =
                    Over(Sample(taken, image.Stride(), columns.Of(x - r.left), rows.Of(y - r.top)), drawn[x]);
        }
    }
}

} // namespace win32

std::unique_ptr<Surface> MakeSurface(int width, int height, double scale) {
    const CSize device = ToDevice(CSize{width, height}, scale);
    if (width <= 0 || height <= 0 || device.cx > win32::kLongestSurface || device.cy > win32::kLongestSurface)
        return nullptr;
    return win32::DibSurface::Make({width, height}, {std::max(1, device.cx), std::max(1, device.cy)}, scale);
}

} // namespace vocafade::platform
