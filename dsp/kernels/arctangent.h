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
// That is t = (s - f g) / (g + f s) with f = 0 or 1. From there the octants follow: the whole angle is a
// number of eighths of a turn (0 to 4, all by half a right angle) plus or minus atan(t), with the sign of y.
// Which ones is settled in single precision, where a vector holds twice as many; what is rounded is computed
// in double.
//
// A, of degree 7, was fitted for the least greatest relative error, 2^-40. Rounded to single precision
// the angle is at most one last place from the C library's.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/kernels/polynomial.h"

namespace vocafade::kernels {
namespace {

constexpr double kArctangent[] = {0.9999999999992769,   -0.3333333327874057,  0.19999993222001702,
                                  -0.14285392415007814, 0.11103554126768549,  -0.0899338126911289,
                                  0.06977699556177808,  -0.037713289074616706};

/// The way to an angle's reduced tangent t, and what goes with atan(t): eighths of a turn to start from, with
/// the sign of atan(t).
struct ReducedAngle {
    Doubles t;
    Floats eighths;
};

VOCAFADE_ALWAYS_INLINE ReducedAngle ReduceAngle(Floats y, Floats x) {
    constexpr float tangentOfHalf = 0.41421357f; // of pi/4
    constexpr double tiny = 1e-300;              // less than any float: makes 0 / 0 zero
    const Floats absX = Absolute(x);
    const Floats absY = Absolute(y);
    const Floats smaller = Minimum(absX, absY);
    const Floats greater = Maximum(absX, absY);
    const Floats steep = absX - absY;                                 // negative: nearer to the y axis
    const Floats near = greater * Broadcast(tangentOfHalf) - smaller; // negative: beyond pi/8
    const Floats far = WhereNegative(near, Broadcast(1.0f), Broadcast(0.0f));
    Floats eighths = WhereNegative(steep, Broadcast(2.0f) - far, far);
    eighths = WhereNegative(x, Broadcast(4.0f) - eighths, eighths);

    const Doubles s = Widen(smaller);
    const Doubles g = Maximum(Widen(greater), Broadcast(tiny));
    const Doubles f = Widen(far);
    return {(s - f * g) / (g + f * s), TurnSign(TurnSign(eighths, steep), x)};
}

/// The angle of a point with such a reduced tangent, and y's sign.
VOCAFADE_ALWAYS_INLINE Floats FinishAngle(const ReducedAngle& reduced, Floats y) {
    constexpr double quarterOfPi = 0.7853981633974483;
    const Doubles base = Widen(reduced.eighths);
    const Doubles rest = TurnSign(reduced.t * Polynomial(kArctangent, reduced.t * reduced.t), base);
    return TurnSign(Narrow(Absolute(base) * Broadcast(quarterOfPi) + rest), y);
}

/// angles[k] = atan2(y[k], x[k]) for `count` points, a power of two of at least 16, by blocks in two short
/// walks each: the processor overlaps the turns of a short loop, not those of a long one.
inline void Angles(const float* y, const float* x, int count, float* angles) {
    constexpr int most = 128;
    double t[most];
    const int block = count < most ? count : most;
    for (int start = 0; start < count; start += block) {
        for (int i = 0; i < block; i += Floats::kLanes) {
            const ReducedAngle reduced = ReduceAngle(Load(y + start + i), Load(x + start + i));
            Store(t + i, reduced.t);
            Store(angles + start + i, reduced.eighths);
        }
        for (int i = 0; i < block; i += Floats::kLanes) {
            const int k = start + i;
            Store(angles + k, FinishAngle({Load(t + i), Load(angles + k)}, Load(y + k)));
        }
    }
}

} // namespace
} // namespace vocafade::kernels
