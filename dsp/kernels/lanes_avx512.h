// SPDX-License-Identifier: MIT
#pragma once

// Sixteen lanes in AVX-512 registers; `lanes_portable.h` says what each operation means.

#include "dsp/kernels/inlining.h"

#include <immintrin.h>

namespace vocafade::kernels {
namespace {

using FloatVector = __m512;
using DoubleVector = __m512d;

VOCAFADE_ALWAYS_INLINE __m512 Spread(float x) { return _mm512_set1_ps(x); }
VOCAFADE_ALWAYS_INLINE __m512d Spread(double x) { return _mm512_set1_pd(x); }
VOCAFADE_ALWAYS_INLINE __m512 Minimum(__m512 a, __m512 b) { return _mm512_min_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m512d Minimum(__m512d a, __m512d b) { return _mm512_min_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m512 Maximum(__m512 a, __m512 b) { return _mm512_max_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m512d Maximum(__m512d a, __m512d b) { return _mm512_max_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m512 Absolute(__m512 x) { return _mm512_abs_ps(x); }
VOCAFADE_ALWAYS_INLINE __m512d Absolute(__m512d x) { return _mm512_abs_pd(x); }
/// x ^ (sign & bit) is one instruction: truth table 0x78 of (x, sign, bit).
VOCAFADE_ALWAYS_INLINE __m512 TurnSign(__m512 x, __m512 sign) {
    const __m512i bit = _mm512_castps_si512(_mm512_set1_ps(-0.0f));
    return _mm512_castsi512_ps(
        _mm512_ternarylogic_epi32(_mm512_castps_si512(x), _mm512_castps_si512(sign), bit, 0x78));
}
VOCAFADE_ALWAYS_INLINE __m512d TurnSign(__m512d x, __m512d sign) {
    const __m512i bit = _mm512_castpd_si512(_mm512_set1_pd(-0.0));
    return _mm512_castsi512_pd(
        _mm512_ternarylogic_epi64(_mm512_castpd_si512(x), _mm512_castpd_si512(sign), bit, 0x78));
}

} // namespace
} // namespace vocafade::kernels

// Needs the operations above.
#include "dsp/kernels/lanes_vectors.h"

namespace vocafade::kernels {
namespace {

VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {_mm512_sqrt_ps(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {_mm512_cvtps_pd(_mm512_castps512_ps256(x.v)), _mm512_cvtps_pd(_mm512_extractf32x8_ps(x.v, 1))};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) {
    const __m512 low = _mm512_castps256_ps512(_mm512_cvtpd_ps(x.low));
    return {_mm512_insertf32x8(low, _mm512_cvtpd_ps(x.high), 1)};
}

VOCAFADE_ALWAYS_INLINE Floats WhereNegative(Floats sign, Floats a, Floats b) {
    return {_mm512_mask_blend_ps(_mm512_movepi32_mask(_mm512_castps_si512(sign.v)), b.v, a.v)};
}

VOCAFADE_ALWAYS_INLINE Floats EvenWhole(Floats x) {
    const __m512i whole = _mm512_cvttps_epi32(_mm512_abs_ps(x.v));
    const __m512i even =
        _mm512_and_si512(_mm512_add_epi32(whole, _mm512_set1_epi32(1)), _mm512_set1_epi32(~1));
    const __m512 sign = _mm512_and_ps(x.v, _mm512_set1_ps(-0.0f));
    return {_mm512_or_ps(_mm512_cvtepi32_ps(even), sign)};
}

VOCAFADE_ALWAYS_INLINE void StoreFirstPass(float* to, int p, Floats r0, Floats r1, Floats r2, Floats r3) {
    // Two rounds of interleaving: first results 0 with 2 and 1 with 3, then those pairs.
    const __m512i lower = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i upper = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    const __m512 a = _mm512_permutex2var_ps(r0.v, lower, r2.v);
    const __m512 b = _mm512_permutex2var_ps(r0.v, upper, r2.v);
    const __m512 c = _mm512_permutex2var_ps(r1.v, lower, r3.v);
    const __m512 d = _mm512_permutex2var_ps(r1.v, upper, r3.v);
    to += 4 * p;
    _mm512_storeu_ps(to, _mm512_permutex2var_ps(a, lower, c));
    _mm512_storeu_ps(to + 16, _mm512_permutex2var_ps(a, upper, c));
    _mm512_storeu_ps(to + 32, _mm512_permutex2var_ps(b, lower, d));
    _mm512_storeu_ps(to + 48, _mm512_permutex2var_ps(b, upper, d));
}

VOCAFADE_ALWAYS_INLINE void StoreSecondPass(float* to, int i, Floats r0, Floats r1, Floats r2, Floats r3) {
    const __m512 a = _mm512_shuffle_f32x4(r0.v, r1.v, 0x88); // r0: p0 p2, r1: p0 p2
    const __m512 b = _mm512_shuffle_f32x4(r0.v, r1.v, 0xdd); //     p1 p3      p1 p3
    const __m512 c = _mm512_shuffle_f32x4(r2.v, r3.v, 0x88);
    const __m512 d = _mm512_shuffle_f32x4(r2.v, r3.v, 0xdd);
    to += 4 * i;
    _mm512_storeu_ps(to, _mm512_shuffle_f32x4(a, c, 0x88));
    _mm512_storeu_ps(to + 16, _mm512_shuffle_f32x4(b, d, 0x88));
    _mm512_storeu_ps(to + 32, _mm512_shuffle_f32x4(a, c, 0xdd));
    _mm512_storeu_ps(to + 48, _mm512_shuffle_f32x4(b, d, 0xdd));
}

VOCAFADE_ALWAYS_INLINE Floats LoadQuarterRate(const float* from, int i) {
    const __m512i quarters = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
    const __m512 four = _mm512_castps128_ps512(_mm_loadu_ps(from + i / 4));
    return {_mm512_permutexvar_ps(quarters, four)};
}

} // namespace
} // namespace vocafade::kernels
