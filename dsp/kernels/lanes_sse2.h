// SPDX-License-Identifier: MIT
#pragma once

// Four lanes in SSE2 registers, which every x86-64 processor has; `lanes_portable.h` says what each operation
// means.

#include "dsp/kernels/inlining.h"

#include <emmintrin.h>

namespace vocafade::kernels {
namespace {

struct Floats {
    static constexpr int kLanes = 4;
    __m128 v;
};

struct Doubles {
    __m128d low;
    __m128d high;
};

VOCAFADE_ALWAYS_INLINE Floats Load(const float* from) { return {_mm_loadu_ps(from)}; }
VOCAFADE_ALWAYS_INLINE void Store(float* to, Floats x) { _mm_storeu_ps(to, x.v); }
VOCAFADE_ALWAYS_INLINE Doubles Load(const double* from) {
    return {_mm_loadu_pd(from), _mm_loadu_pd(from + 2)};
}
VOCAFADE_ALWAYS_INLINE void Store(double* to, Doubles x) {
    _mm_storeu_pd(to, x.low);
    _mm_storeu_pd(to + 2, x.high);
}
VOCAFADE_ALWAYS_INLINE Floats Broadcast(float x) { return {_mm_set1_ps(x)}; }
VOCAFADE_ALWAYS_INLINE Doubles Broadcast(double x) { return {_mm_set1_pd(x), _mm_set1_pd(x)}; }
VOCAFADE_ALWAYS_INLINE Floats LaneNumbers() { return {_mm_setr_ps(0, 1, 2, 3)}; }

VOCAFADE_ALWAYS_INLINE Floats operator+(Floats a, Floats b) { return {_mm_add_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator-(Floats a, Floats b) { return {_mm_sub_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator*(Floats a, Floats b) { return {_mm_mul_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator/(Floats a, Floats b) { return {_mm_div_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles operator+(Doubles a, Doubles b) {
    return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator-(Doubles a, Doubles b) {
    return {_mm_sub_pd(a.low, b.low), _mm_sub_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator*(Doubles a, Doubles b) {
    return {_mm_mul_pd(a.low, b.low), _mm_mul_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator/(Doubles a, Doubles b) {
    return {_mm_div_pd(a.low, b.low), _mm_div_pd(a.high, b.high)};
}

VOCAFADE_ALWAYS_INLINE Floats Negative(Floats x) { return {_mm_xor_ps(x.v, _mm_set1_ps(-0.0f))}; }
VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {_mm_sqrt_ps(x.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Minimum(Floats a, Floats b) { return {_mm_min_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Minimum(Doubles a, Doubles b) {
    return {_mm_min_pd(a.low, b.low), _mm_min_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles Maximum(Doubles a, Doubles b) {
    return {_mm_max_pd(a.low, b.low), _mm_max_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Floats Maximum(Floats a, Floats b) { return {_mm_max_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Absolute(Floats x) { return {_mm_andnot_ps(_mm_set1_ps(-0.0f), x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Absolute(Doubles x) {
    const __m128d sign = _mm_set1_pd(-0.0);
    return {_mm_andnot_pd(sign, x.low), _mm_andnot_pd(sign, x.high)};
}

VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {_mm_cvtps_pd(x.v), _mm_cvtps_pd(_mm_movehl_ps(x.v, x.v))};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) {
    return {_mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high))};
}

VOCAFADE_ALWAYS_INLINE Floats TurnSign(Floats x, Floats sign) {
    return {_mm_xor_ps(x.v, _mm_and_ps(sign.v, _mm_set1_ps(-0.0f)))};
}
VOCAFADE_ALWAYS_INLINE Doubles TurnSign(Doubles x, Doubles sign) {
    const __m128d bit = _mm_set1_pd(-0.0);
    return {_mm_xor_pd(x.low, _mm_and_pd(sign.low, bit)), _mm_xor_pd(x.high, _mm_and_pd(sign.high, bit))};
}
VOCAFADE_ALWAYS_INLINE Floats WhereNegative(Floats sign, Floats a, Floats b) {
    const __m128 mask = _mm_castsi128_ps(_mm_srai_epi32(_mm_castps_si128(sign.v), 31));
    return {_mm_or_ps(_mm_and_ps(mask, a.v), _mm_andnot_ps(mask, b.v))};
}

VOCAFADE_ALWAYS_INLINE Floats EvenWhole(Floats x) {
    const __m128 bit = _mm_set1_ps(-0.0f);
    const __m128i whole = _mm_cvttps_epi32(_mm_andnot_ps(bit, x.v));
    const __m128i even = _mm_and_si128(_mm_add_epi32(whole, _mm_set1_epi32(1)), _mm_set1_epi32(~1));
    return {_mm_or_ps(_mm_cvtepi32_ps(even), _mm_and_ps(bit, x.v))};
}

VOCAFADE_ALWAYS_INLINE void StoreFirstPass(float* to, int p, Floats r0, Floats r1, Floats r2, Floats r3) {
    _MM_TRANSPOSE4_PS(r0.v, r1.v, r2.v, r3.v);
    to += 4 * p;
    _mm_storeu_ps(to, r0.v);
    _mm_storeu_ps(to + 4, r1.v);
    _mm_storeu_ps(to + 8, r2.v);
    _mm_storeu_ps(to + 12, r3.v);
}

VOCAFADE_ALWAYS_INLINE void StoreSecondPass(float* to, int i, Floats r0, Floats r1, Floats r2, Floats r3) {
    to += 4 * i;
    _mm_storeu_ps(to, r0.v);
    _mm_storeu_ps(to + 4, r1.v);
    _mm_storeu_ps(to + 8, r2.v);
    _mm_storeu_ps(to + 12, r3.v);
}

VOCAFADE_ALWAYS_INLINE Floats LoadQuarterRate(const float* from, int i) { return {_mm_set1_ps(from[i / 4])}; }

} // namespace
} // namespace vocafade::kernels
