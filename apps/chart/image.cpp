// SPDX-License-Identifier: MIT
#include "apps/chart/image.h"

#include <algorithm>
#include <cairo.h>
#include <memory>
#include <stdexcept>

namespace vocafade {

std::string EncodePng(cairo_surface_t* surface) {
    std::string bytes;
    const auto append = [](void* target, const unsigned char* data, unsigned int length) {
        static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    };
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface, append, &bytes);
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("the picture cannot be encoded: ") +
                                 cairo_status_to_string(status));
    return bytes;
}

std::string EncodePng(const Image& image) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, image.width, image.height), &cairo_surface_destroy);
    unsigned char* rows = cairo_image_surface_get_data(surface.get()); // null for an impossible size
    const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface.get());
    for (int row = 0; rows != nullptr && row < image.height; ++row)
        std::copy_n(image.pixels.begin() + static_cast<std::ptrdiff_t>(row) * image.width, image.width,
                    reinterpret_cast<std::uint32_t*>(rows + row * stride));
    cairo_surface_mark_dirty(surface.get());
    return EncodePng(surface.get());
}

} // namespace vocafade
