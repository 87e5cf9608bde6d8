// SPDX-License-Identifier: MIT
#pragma once

// Four lanes in SSE2 registers, which every x86-64 processor has; `lanes_portable.h` says what each operation
// means.

#include "dsp/kernels/inlining.h"

#include <emmintrin.h>

namespace vocafade::kernels {
namespace {

using FloatVector = __m128;
using DoubleVector = __m128d;

VOCAFADE_ALWAYS_INLINE __m128 Spread(float x) { return _mm_set1_ps(x); }
VOCAFADE_ALWAYS_INLINE __m128d Spread(double x) { return _mm_set1_pd(x); }
VOCAFADE_ALWAYS_INLINE __m128 Minimum(__m128 a, __m128 b) { return _mm_min_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m128d Minimum(__m128d a, __m128d b) { return _mm_min_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m128 Maximum(__m128 a, __m128 b) { return _mm_max_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m128d Maximum(__m128d a, __m128d b) { return _mm_max_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m128 Absolute(__m128 x) { return _mm_andnot_ps(_mm_set1_ps(-0.0f), x); }
VOCAFADE_ALWAYS_INLINE __m128d Absolute(__m128d x) { return _mm_andnot_pd(_mm_set1_pd(-0.0), x); }
VOCAFADE_ALWAYS_INLINE __m128 TurnSign(__m128 x, __m128 sign) {
    return _mm_xor_ps(x, _mm_and_ps(sign, _mm_set1_ps(-0.0f)));
}
VOCAFADE_ALWAYS_INLINE __m128d TurnSign(__m128d x, __m128d sign) {
    return _mm_xor_pd(x, _mm_and_pd(sign, _mm_set1_pd(-0.0)));
}

} // namespace
} // namespace vocafade::kernels

// Needs the operations above.
#include "dsp/kernels/lanes_vectors.h"

namespace vocafade::kernels {
namespace {

VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {_mm_sqrt_ps(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {_mm_cvtps_pd(x.v), _mm_cvtps_pd(_mm_movehl_ps(x.v, x.v))};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) {
    return {_mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high))};
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
