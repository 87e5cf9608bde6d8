// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade {

/// Pi and 2 pi as the engine uses them: the nearest single-precision numbers.
inline constexpr float kPi = 3.1415927f;
inline constexpr float kTwoPi = 6.2831855f;

} // namespace vocafade
