// SPDX-License-Identifier: MIT
#include "ui/platform/x11/surface.h"

#include <cstring>

namespace vocafade::platform {

namespace x11 {
ImageSurface::ImageSurface(cairo_surface_t* surface, CSize size, double scale)
    : surface_(surface), context_(cairo_create(surface)),
      size_(size), deviceSize_{cairo_image_surface_get_width(surface),
                               cairo_image_surface_get_height(surface)},
      scale_(scale),
      stride_(cairo_image_surface_get_stride(surface) / static_cast<int>(sizeof(std::uint32_t))) {}

ImageSurface::~ImageSurface() {
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
}

std::uint32_t* ImageSurface::Pixels() {
    cairo_surface_flush(surface_);
    // Cairo aligns every row for 32-bit pixels.
    return static_cast<std::uint32_t*>(static_cast<void*>(cairo_image_surface_get_data(surface_)));
}

void ImageSurface::PixelsChanged() { cairo_surface_mark_dirty(surface_); }

cairo_t* ImageSurface::Begin(std::span<const CRect> clip) {
    cairo_save(context_);
    cairo_new_path(context_);
    for (const CRect& logical : clip) {
        const CRect r = ToDevice(logical, scale_);
        cairo_rectangle(context_, r.left, r.top, r.Width(), r.Height());
    }
    cairo_clip(context_);
    return context_;
}

void ImageSurface::Fill(std::span<const CRect> where, std::uint32_t rgb) {
    cairo_t* c = Begin(where);
    cairo_set_source_rgb(c, ((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0);
    cairo_set_operator(c, CAIRO_OPERATOR_SOURCE);
    cairo_paint(c);
    cairo_restore(c);
}

void ImageSurface::Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) {
    if (from.IsRectEmpty() || to.IsRectEmpty()) return;
    auto& image = static_cast<ImageSurface&>(source);
    const CRect in = ToDevice(from, image.scale_);
    const CRect out = ToDevice(to, scale_);
    if (in.IsRectEmpty() || out.IsRectEmpty()) return;
    cairo_t* c = Begin(clip);
    cairo_rectangle(c, out.left, out.top, out.Width(), out.Height());
    cairo_clip(c);
    cairo_translate(c, out.left, out.top);
    const bool sameSize = from.Size() == to.Size();
    if (sameSize && in.Size() == out.Size()) {
        cairo_set_source_surface(c, image.surface_, -in.left, -in.top);
        cairo_pattern_set_filter(cairo_get_source(c), CAIRO_FILTER_NEAREST);
        cairo_paint(c);
        cairo_restore(c);
        return;
    }
    // A view of just that part, so that the neighbours outside of it do not bleed in at the edges.
    cairo_surface_t* part =
        cairo_surface_create_for_rectangle(image.surface_, in.left, in.top, in.Width(), in.Height());
    cairo_filter_t filter = CAIRO_FILTER_BILINEAR;
    if (sameSize && image.scale_ == scale_) {
        filter = CAIRO_FILTER_NEAREST;
    } else if (sameSize) {
        // Each device pixel is taken from its exact place in the source, wherever the edges were rounded to.
        const double ratio = scale_ / image.scale_;
        cairo_translate(c, to.left * scale_ - out.left, to.top * scale_ - out.top);
        cairo_scale(c, ratio, ratio);
        cairo_translate(c, in.left - from.left * image.scale_, in.top - from.top * image.scale_);
    } else {
        cairo_scale(c, static_cast<double>(out.Width()) / in.Width(),
                    static_cast<double>(out.Height()) / in.Height());
    }
    cairo_set_source_surface(c, part, 0, 0);
    cairo_pattern_set_extend(cairo_get_source(c), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(c), filter);
    cairo_paint(c);
    cairo_surface_destroy(part);
    cairo_restore(c);
}

bool ImageSurface::WritePng(const char* path) {
    cairo_surface_flush(surface_);
    return cairo_surface_write_to_png(surface_, path) == CAIRO_STATUS_SUCCESS;
}

namespace {

/// Longest side of a picture that is decoded, in logical pixels, and most pixels: far more than any artwork
/// has, and at most 64 MB.
constexpr double kLongestSide = 4096;
constexpr std::uint64_t kMostPixels = 4096 * 4096;
constexpr int kLongestSurface = 16384; ///< device pixels

/// The size that a PNG file declares stands at its beginning: nothing is allocated for what is not believed.
bool IsOfSaneSize(std::span<const std::byte> file, double scale) {
    constexpr std::size_t kWidthAt = 16; // behind the signature, the first chunk's length and its name
    if (file.size() < kWidthAt + 8) return false;
    const auto number = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = at; i < at + 4; ++i)
            value = value << 8 | std::to_integer<std::uint32_t>(file[i]);
        return value;
    };
    const std::uint32_t width = number(kWidthAt);
    const std::uint32_t height = number(kWidthAt + 4);
    const double longest = kLongestSide * scale;
    return width > 0 && width <= longest && height > 0 && height <= longest &&
           std::uint64_t{width} * height <= kMostPixels;
}

struct Reader {
    std::span<const std::byte> rest;
};

cairo_status_t ReadBytes(void* closure, unsigned char* data, unsigned length) {
    auto& reader = *static_cast<Reader*>(closure);
    if (reader.rest.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, reader.rest.data(), length);
    reader.rest = reader.rest.subspan(length);
    return CAIRO_STATUS_SUCCESS;
}

std::unique_ptr<ImageSurface> MakeImage(CSize size, CSize deviceSize, double scale) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, deviceSize.cx, deviceSize.cy);
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS)
        return std::make_unique<ImageSurface>(surface, size, scale);
    cairo_surface_destroy(surface);
    return nullptr;
}

} // namespace
} // namespace x11

std::unique_ptr<Surface> MakeSurface(int width, int height, double scale) {
    const CSize device = ToDevice(CSize{width, height}, scale);
    if (width <= 0 || height <= 0 || device.cx > x11::kLongestSurface || device.cy > x11::kLongestSurface)
        return nullptr;
    return x11::MakeImage({width, height}, {std::max(1, device.cx), std::max(1, device.cy)}, scale);
}

std::unique_ptr<Surface> DecodePng(std::span<const std::byte> file, double scale) {
    if (!x11::IsOfSaneSize(file, scale)) return nullptr;
    x11::Reader reader{file};
    cairo_surface_t* decoded = cairo_image_surface_create_from_png_stream(&x11::ReadBytes, &reader);
    if (cairo_surface_status(decoded) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(decoded);
        return nullptr;
    }
    const CSize device{cairo_image_surface_get_width(decoded), cairo_image_surface_get_height(decoded)};
    CSize size = ToLogicalSize(device, scale);
    size = {std::max(1, size.cx), std::max(1, size.cy)};
    auto picture = std::make_unique<x11::ImageSurface>(decoded, size, scale);
    if (cairo_image_surface_get_format(decoded) == CAIRO_FORMAT_ARGB32) return picture;
    // A file without alpha decodes to another format; the layer knows one.
    std::unique_ptr<x11::ImageSurface> result = x11::MakeImage(size, device, scale);
    const CRect all({0, 0}, size);
    if (result != nullptr) result->Draw(*picture, all, all, {&all, 1});
    return result;
}

} // namespace vocafade::platform
