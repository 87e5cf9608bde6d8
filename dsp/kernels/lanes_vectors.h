// SPDX-License-Identifier: MIT
#pragma once

// What is the same for all vector registers: a vector of floats, the vectors of doubles by halves, and all
// that follows from operations on one register. `lanes_portable.h` says what each operation means.
//
// Included at the place in a file of lanes where its registers, `FloatVector` and `DoubleVector`, have these
// operations: Spread, Minimum, Maximum, Absolute, TurnSign.

namespace vocafade::kernels {
namespace {

struct Floats {
    static constexpr int kLanes = sizeof(FloatVector) / sizeof(float);
    FloatVector v;
};

struct Doubles {
    DoubleVector low;
    DoubleVector high;
};

template <typename Vector>
VOCAFADE_ALWAYS_INLINE Vector LoadVector(const void* from) {
    Vector v;
    __builtin_memcpy(&v, from, sizeof v);
    return v;
}

VOCAFADE_ALWAYS_INLINE Floats Load(const float* from) { return {LoadVector<FloatVector>(from)}; }
VOCAFADE_ALWAYS_INLINE Doubles Load(const double* from) {
    return {LoadVector<DoubleVector>(from), LoadVector<DoubleVector>(from + Floats::kLanes / 2)};
}
VOCAFADE_ALWAYS_INLINE void Store(float* to, Floats x) { __builtin_memcpy(to, &x.v, sizeof x.v); }
VOCAFADE_ALWAYS_INLINE void Store(double* to, Doubles x) {
    __builtin_memcpy(to, &x.low, sizeof x.low);
    __builtin_memcpy(to + Floats::kLanes / 2, &x.high, sizeof x.high);
}

VOCAFADE_ALWAYS_INLINE Floats Broadcast(float x) { return {Spread(x)}; }
VOCAFADE_ALWAYS_INLINE Doubles Broadcast(double x) { return {Spread(x), Spread(x)}; }
constexpr float kLaneNumbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
VOCAFADE_ALWAYS_INLINE Floats LaneNumbers() { return Load(kLaneNumbers); }

// The compiler's own operators on vectors round each lane as the operator on one number does.
VOCAFADE_ALWAYS_INLINE Floats operator+(Floats a, Floats b) { return {a.v + b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator-(Floats a, Floats b) { return {a.v - b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator*(Floats a, Floats b) { return {a.v * b.v}; }
VOCAFADE_ALWAYS_INLINE Floats operator/(Floats a, Floats b) { return {a.v / b.v}; }
VOCAFADE_ALWAYS_INLINE Doubles operator+(Doubles a, Doubles b) { return {a.low + b.low, a.high + b.high}; }
VOCAFADE_ALWAYS_INLINE Doubles operator-(Doubles a, Doubles b) { return {a.low - b.low, a.high - b.high}; }
VOCAFADE_ALWAYS_INLINE Doubles operator*(Doubles a, Doubles b) { return {a.low * b.low, a.high * b.high}; }
VOCAFADE_ALWAYS_INLINE Doubles operator/(Doubles a, Doubles b) { return {a.low / b.low, a.high / b.high}; }

VOCAFADE_ALWAYS_INLINE Floats Negative(Floats x) { return {-x.v}; }
VOCAFADE_ALWAYS_INLINE Floats Minimum(Floats a, Floats b) { return {Minimum(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Minimum(Doubles a, Doubles b) {
    return {Minimum(a.low, b.low), Minimum(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Floats Maximum(Floats a, Floats b) { return {Maximum(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Maximum(Doubles a, Doubles b) {
    return {Maximum(a.low, b.low), Maximum(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Floats Absolute(Floats x) { return {Absolute(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Absolute(Doubles x) { return {Absolute(x.low), Absolute(x.high)}; }
VOCAFADE_ALWAYS_INLINE Floats TurnSign(Floats x, Floats sign) { return {TurnSign(x.v, sign.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles TurnSign(Doubles x, Doubles sign) {
    return {TurnSign(x.low, sign.low), TurnSign(x.high, sign.high)};
}

} // namespace
} // namespace vocafade::kernels
