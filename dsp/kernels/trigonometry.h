// SPDX-License-Identifier: MIT
#pragma once

// Angles, sines and cosines. What is rounded is computed in double, by polynomials that were fitted for the
// least greatest relative error: 2^-40 for the angle, 2^-43 for the sine. Rounded to single precision all are
// at most one last place from the C library's. The relative error is what counts: next to their zeros the
// functions keep all the digits of a float.
//
// Included through phase_vocoder.h, after the lanes.

namespace vocafade::kernels {
namespace {

/// c[0] + c[1] z + ... + c[N - 1] z^(N - 1), where powers[i] is z to the power of 2^i. By halves: the lower
/// terms plus a power of z times the upper ones, and so on down to pairs. That takes a product or two more
/// than the usual nested form, but its longest chain of dependent operations, which is what the kernels wait
/// for, is a third as long.
template <int N>
VOCAFADE_ALWAYS_INLINE Doubles PolynomialPart(const double* c, const Doubles* powers) {
    if constexpr (N == 1) {
        return Broadcast(c[0]);
    } else {
        constexpr int step = N > 4 ? 2 : (N > 2 ? 1 : 0);
        constexpr int half = 1 << step;
        return PolynomialPart<half>(c, powers) + PolynomialPart<N - half>(c + half, powers) * powers[step];
    }
}

template <int N>
VOCAFADE_ALWAYS_INLINE Doubles Polynomial(const double (&c)[N], Doubles z) {
    static_assert(N > 4 && N <= 8);
    const Doubles squared = z * z;
    const Doubles powers[] = {z, squared, squared * squared};
    return PolynomialPart<N>(c, powers);
}

// atan2(y, x) in [-pi, pi], with the C library's answers for zeros of either sign. With s <= g the smaller and
// the greater of |x| and |y|, the angle between the nearer axis and the point is atan(s / g) in [0, pi/4];
// beyond half of that it is pi/4 + atan((s - g) / (s + g)). So the polynomial need only hold for |t| up to
// tan(pi/8):
//
//   atan(t) = t * A(t^2),   t = (s - f g) / (g + f s) with f = 0 or 1
//
// From there the octants follow: the whole angle is a number of eighths of a turn (0 to 4) plus or minus
// atan(t), with the sign of y. Which ones is settled in single precision, where a vector holds twice as many.

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

// Sine and cosine of a folded phase, |x| <= pi (and a few last places more). Both are sines of an angle in
// [-pi/2, pi/2], found without branches:
//
//   cos x = S(pi/2 - |x|),   sin x = sign(x) S(min(|x|, pi - |x|)),   S(t) = t * B(t^2)

constexpr double kSine[] = {0.9999999999999376,      -0.1666666666643233,   0.008333333318765478,
                            -0.00019841266411613407, 2.755693192575586e-06, -2.5029518830600788e-08,
                            1.5401169840699647e-10};

struct SineCosine {
    Floats sine;
    Floats cosine;
};

VOCAFADE_ALWAYS_INLINE SineCosine OfFoldedPhase(Floats x) {
    constexpr double pi = 3.141592653589793;
    const Doubles size = Widen(Absolute(x));
    const Doubles forCosine = Broadcast(pi / 2) - size;
    const Doubles forSine = Minimum(size, Broadcast(pi) - size);
    return {TurnSign(Narrow(forSine * Polynomial(kSine, forSine * forSine)), x),
            Narrow(forCosine * Polynomial(kSine, forCosine * forCosine))};
}

} // namespace
} // namespace vocafade::kernels
