// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

typedef struct _cairo_surface cairo_surface_t;

namespace vocafade {

/// Pixels, 0xRRGGBB, row by row; whatever stands above these 24 bits is ignored.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

/// [any-thread] The image as a PNG file's bytes. Throws `std::runtime_error` when it cannot be encoded.
std::string EncodePng(const Image& image);
/// [any-thread] The same of what is drawn on a Cairo surface.
std::string EncodePng(cairo_surface_t* surface);

} // namespace vocafade
