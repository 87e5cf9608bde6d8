// SPDX-License-Identifier: MIT
#pragma once

// The angle of a point: atan2(y, x) in [-pi, pi], with the C library's answers for zeros of either sign.
//
// With s <= g the smaller and the greater of |x| and |y|, the angle between the nearer axis and the point is
// atan(s / g) in [0, pi/4]; beyond half of that it is pi/4 + atan((s - g) / (s + g)). So the polynomial need
// only hold for |t| up to tan(pi/8):
//
//   atan(t) = t * A(t^2)
//
// where A, of degree 7, was fitted for the least greatest relative error, 2^-40. Rounded to single precision
// the angle is at most one last place from the C library's.

#include "dsp/kernels/polynomial.h"

namespace vocafade::kernels {
namespace {

constexpr double kArctangent[] = {0.9999999999992769,   -0.3333333327874057,  0.19999993222001702,
                                  -0.14285392415007814, 0.11103554126768549,  -0.0899338126911289,
                                  0.06977699556177808,  -0.037713289074616706};

VOCAFADE_ALWAYS_INLINE Doubles Angle(Doubles y, Doubles x) {
    constexpr double pi = 3.141592653589793;
    constexpr double tangentOfEighth = 0.41421356237309503; // of pi
    constexpr double tiny = 1e-300;                         // less than any float: makes 0 / 0 zero
    const Doubles zero = Broadcast(0.0);
    const Doubles absX = Absolute(x);
    const Doubles absY = Absolute(y);
    const Doubles steep = absX - absY; // negative: nearer to the y axis
    const Doubles smaller = Minimum(absX, absY);
    const Doubles greater = Maximum(Maximum(absX, absY), Broadcast(tiny));
    const Doubles far = greater * Broadcast(tangentOfEighth) - smaller; // negative: beyond pi/8
    const Doubles t =
        WhereNegative(far, smaller - greater, smaller) / WhereNegative(far, smaller + greater, greater);
    Doubles angle = t * Polynomial(kArctangent, t * t) + WhereNegative(far, Broadcast(pi / 4), zero);
    angle = TurnSign(angle, steep) + WhereNegative(steep, Broadcast(pi / 2), zero);
    angle = TurnSign(angle, x) + WhereNegative(x, Broadcast(pi), zero);
    return TurnSign(angle, y);
}

} // namespace
} // namespace vocafade::kernels
