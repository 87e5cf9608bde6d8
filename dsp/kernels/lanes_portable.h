// SPDX-License-Identifier: MIT
#pragma once

// One lane: what every processor can do. The other instruction sets do the same operations in the same order
// on several lanes at once, so this file is also the definition of what each operation means.

#include "dsp/kernels/inlining.h"

#include <cstdint>

namespace vocafade::kernels {
namespace {

/// Single-precision numbers, one a lane.
struct Floats {
    static constexpr int kLanes = 1;
    float v;
};

/// As many double-precision numbers.
struct Doubles {
    double v;
};

VOCAFADE_ALWAYS_INLINE Floats Load(const float* from) { return {*from}; }
VOCAFADE_ALWAYS_INLINE void Store(float* to, Floats x) { *to = x.v; }
VOCAFADE_ALWAYS_INLINE Doubles Load(const double* from) { return {*from}; }
VOCAFADE_ALWAYS_INLINE void Store(double* to, Doubles x) { *to = x.v; }
VOCAFADE_ALWAYS_INLINE Floats Broadcast(float x) { return {x}; }
VOCAFADE_ALWAYS_INLINE Doubles Broadcast(double x) { return {x}; }
/// The lane's own number: 0, 1, 2 ...
VOCAFADE_ALWAYS_INLINE Floats LaneNumbers() { return {0.0f}; }

VOCAFADE_ALWAYS_INLINE Floats operator+(Floats a, Floats b) { return {a.v + b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator-(Floats a, Floats b) { return {a.v - b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator*(Floats a, Floats b) { return {a.v * b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator/(Floats a, Floats b) { return {a.v / b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles operator+(Doubles a, Doubles b) { return {a.v + b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles operator-(Doubles a, Doubles b) { return {a.v - b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles operator*(Doubles a, Doubles b) { return {a.v * b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles operator/(Doubles a, Doubles b) { return {a.v / b.v}; }

VOCAFADE_ALWAYS_INLINE Floats Negative(Floats x) { return {-x.v}; }
VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {__builtin_sqrtf(x.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Minimum(Floats a, Floats b) { return {a.v < b.v ? a.v : b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles Minimum(Doubles a, Doubles b) { return {a.v < b.v ? a.v : b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles Maximum(Doubles a, Doubles b) { return {a.v > b.v ? a.v : b.v}; }
VOCAFADE_ALWAYS_INLINE Floats Maximum(Floats a, Floats b) { return {a.v > b.v ? a.v : b.v}; }
VOCAFADE_ALWAYS_INLINE Floats Absolute(Floats x) { return {__builtin_fabsf(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Absolute(Doubles x) { return {__builtin_fabs(x.v)}; }

VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) { return {static_cast<double>(x.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) { return {static_cast<float>(x.v)}; }

/// x with its sign turned where `sign` is negative (its sign bit counts, so -0 is negative).
VOCAFADE_ALWAYS_INLINE Floats TurnSign(Floats x, Floats sign) {
    const auto bits = __builtin_bit_cast(std::uint32_t, x.v);
    const auto signBit = __builtin_bit_cast(std::uint32_t, sign.v) & 0x80000000U;
    return {__builtin_bit_cast(float, bits ^ signBit)};
}
VOCAFADE_ALWAYS_INLINE Doubles TurnSign(Doubles x, Doubles sign) {
    const auto bits = __builtin_bit_cast(std::uint64_t, x.v);
    const auto signBit = __builtin_bit_cast(std::uint64_t, sign.v) & 0x8000000000000000ULL;
    return {__builtin_bit_cast(double, bits ^ signBit)};
}

/// a where the sign bit of `sign` is set, b elsewhere.
VOCAFADE_ALWAYS_INLINE Floats WhereNegative(Floats sign, Floats a, Floats b) {
    return __builtin_signbit(sign.v) ? a : b;
}

/// Truncated towards zero; an odd result moves on to the next even one away from zero. |x| < 2^31.
VOCAFADE_ALWAYS_INLINE Floats EvenWhole(Floats x) {
    const auto whole = static_cast<std::int32_t>(__builtin_fabsf(x.v));
    return {__builtin_copysignf(static_cast<float>((whole + 1) & ~1), x.v)};
}

/// First transform pass: lane p of the four results goes to to[4p], to[4p + 1] ..., p counting from `p`.
VOCAFADE_ALWAYS_INLINE void StoreFirstPass(float* to, int p, Floats r0, Floats r1, Floats r2, Floats r3) {
    to += 4 * p;
    to[0] = r0.v;
    to[1] = r1.v;
    to[2] = r2.v;
    to[3] = r3.v;
}

/// Second pass: lane i = 4p + q of result r goes to to[16p + 4r + q], i counting from `i`.
VOCAFADE_ALWAYS_INLINE void StoreSecondPass(float* to, int i, Floats r0, Floats r1, Floats r2, Floats r3) {
    to += 16 * (i / 4) + i % 4;
    to[0] = r0.v;
    to[4] = r1.v;
    to[8] = r2.v;
    to[12] = r3.v;
}

/// Second pass: from[p] for lane i = 4p + q, i counting from `i`.
VOCAFADE_ALWAYS_INLINE Floats LoadQuarterRate(const float* from, int i) { return {from[i / 4]}; }

} // namespace
} // namespace vocafade::kernels
