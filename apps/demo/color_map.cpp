// SPDX-License-Identifier: MIT
#include "apps/demo/color_map.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vocafade {
namespace {

/// A colour in Oklab, the space in which equal distances look about equally far.
struct Lab {
    double lightness;
    double greenRed;
    double blueYellow;
};

// Night blue, blue, teal, sand, warm white: the lightness is that of an even ramp.
constexpr std::array<Lab, 5> kStops{{
    {0.16, -0.004, -0.035},
    {0.365, 0.000, -0.105},
    {0.57, -0.070, -0.045},
    {0.775, -0.035, 0.085},
    {0.98, 0.004, 0.030},
}};

std::uint32_t Channel(double linear) {
    const double clipped = std::clamp(linear, 0.0, 1.0);
    const double coded = clipped <= 0.0031308 ? 12.92 * clipped : 1.055 * std::pow(clipped, 1 / 2.4) - 0.055;
    return static_cast<std::uint32_t>(std::lround(coded * 255.0));
}

/// Oklab to sRGB, by the matrices of its definition.
std::uint32_t ToRgb(const Lab& color) {
    const auto cube = [](double value) { return value * value * value; };
    const double l = cube(color.lightness + 0.3963377774 * color.greenRed + 0.2158037573 * color.blueYellow);
    const double m = cube(color.lightness - 0.1055613458 * color.greenRed - 0.0638541728 * color.blueYellow);
    const double s = cube(color.lightness - 0.0894841775 * color.greenRed - 1.2914855480 * color.blueYellow);
    return Channel(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s) << 16 |
           Channel(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s) << 8 |
           Channel(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s);
}

} // namespace

std::uint32_t LevelColor(double level) {
    const double at = std::clamp(level, 0.0, 1.0) * static_cast<double>(kStops.size() - 1);
    const auto from = std::min(static_cast<std::size_t>(at), kStops.size() - 2);
    const double share = at - static_cast<double>(from);
    const auto mix = [&](double Lab::*part) {
        return kStops[from].*part + (kStops[from + 1].*part - kStops[from].*part) * share;
    };
    return ToRgb({mix(&Lab::lightness), mix(&Lab::greenRed), mix(&Lab::blueYellow)});
}

} // namespace vocafade
