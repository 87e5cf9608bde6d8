// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>

namespace vocafade {

/// The decade taper of faders and knobs: the fraction of the range (0 to 1) at the fraction `travel` of the
/// way, (10^t - 1) / 9. Half way lies at 0.2403 of the range, so low frequencies get most of the travel.
inline double TaperedFraction(double travel) { return (std::pow(10.0, travel) - 1.0) / 9.0; }

/// Its inverse: the fraction of the way at which `fraction` of the range lies.
inline double TaperedTravel(double fraction) { return std::log10(fraction * 9.0 + 1.0); }

} // namespace vocafade
