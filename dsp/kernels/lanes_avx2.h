// SPDX-License-Identifier: MIT
#pragma once

// Eight lanes in AVX2 registers; `lanes_portable.h` says what each operation means.

#include "dsp/kernels/inlining.h"

#include <immintrin.h>

namespace vocafade::kernels {
namespace {

using FloatVector = __m256;
using DoubleVector = __m256d;

VOCAFADE_ALWAYS_INLINE __m256 Spread(float x) { return _mm256_set1_ps(x); }
VOCAFADE_ALWAYS_INLINE __m256d Spread(double x) { return _mm256_set1_pd(x); }
VOCAFADE_ALWAYS_INLINE __m256 Minimum(__m256 a, __m256 b) { return _mm256_min_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m256d Minimum(__m256d a, __m256d b) { return _mm256_min_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m256 Maximum(__m256 a, __m256 b) { return _mm256_max_ps(a, b); }
VOCAFADE_ALWAYS_INLINE __m256d Maximum(__m256d a, __m256d b) { return _mm256_max_pd(a, b); }
VOCAFADE_ALWAYS_INLINE __m256 Absolute(__m256 x) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), x); }
VOCAFADE_ALWAYS_INLINE __m256d Absolute(__m256d x) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), x); }
VOCAFADE_ALWAYS_INLINE __m256 TurnSign(__m256 x, __m256 sign) {
    return _mm256_xor_ps(x, _mm256_and_ps(sign, _mm256_set1_ps(-0.0f)));
}
VOCAFADE_ALWAYS_INLINE __m256d TurnSign(__m256d x, __m256d sign) {
    return _mm256_xor_pd(x, _mm256_and_pd(sign, _mm256_set1_pd(-0.0)));
}

} // namespace
} // namespace vocafade::kernels

// Needs the operations above.
#include "dsp/kernels/lanes_vectors.h"

namespace vocafade::kernels {
namespace {

VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {_mm256_sqrt_ps(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(x.v)), _mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1))};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) {
    return {_mm256_set_m128(_mm256_cvtpd_ps(x.high), _mm256_cvtpd_ps(x.low))};
}

VOCAFADE_ALWAYS_INLINE Floats WhereNegative(Floats sign, Floats a, Floats b) {
    return {_mm256_blendv_ps(b.v, a.v, sign.v)};
}

VOCAFADE_ALWAYS_INLINE Floats EvenWhole(Floats x) {
    const __m256 bit = _mm256_set1_ps(-0.0f);
    const __m256i whole = _mm256_cvttps_epi32(_mm256_andnot_ps(bit, x.v));
    const __m256i even =
        _mm256_and_si256(_mm256_add_epi32(whole, _mm256_set1_epi32(1)), _mm256_set1_epi32(~1));
    return {_mm256_or_ps(_mm256_cvtepi32_ps(even), _mm256_and_ps(bit, x.v))};
}

VOCAFADE_ALWAYS_INLINE void StoreFirstPass(float* to, int p, Floats r0, Floats r1, Floats r2, Floats r3) {
    const __m256 a = _mm256_unpacklo_ps(r0.v, r2.v); // p: 0 0 1 1 | 4 4 5 5
    const __m256 b = _mm256_unpackhi_ps(r0.v, r2.v); //    2 2 3 3 | 6 6 7 7
    const __m256 c = _mm256_unpacklo_ps(r1.v, r3.v);
    const __m256 d = _mm256_unpackhi_ps(r1.v, r3.v);
    const __m256 p04 = _mm256_unpacklo_ps(a, c);
    const __m256 p15 = _mm256_unpackhi_ps(a, c);
    const __m256 p26 = _mm256_unpacklo_ps(b, d);
    const __m256 p37 = _mm256_unpackhi_ps(b, d);
    to += 4 * p;
    _mm256_storeu_ps(to, _mm256_permute2f128_ps(p04, p15, 0x20));
    _mm256_storeu_ps(to + 8, _mm256_permute2f128_ps(p26, p37, 0x20));
    _mm256_storeu_ps(to + 16, _mm256_permute2f128_ps(p04, p15, 0x31));
    _mm256_storeu_ps(to + 24, _mm256_permute2f128_ps(p26, p37, 0x31));
}

VOCAFADE_ALWAYS_INLINE void StoreSecondPass(float* to, int i, Floats r0, Floats r1, Floats r2, Floats r3) {
    to += 4 * i;
    _mm256_storeu_ps(to, _mm256_permute2f128_ps(r0.v, r1.v, 0x20));
    _mm256_storeu_ps(to + 8, _mm256_permute2f128_ps(r2.v, r3.v, 0x20));
    _mm256_storeu_ps(to + 16, _mm256_permute2f128_ps(r0.v, r1.v, 0x31));
    _mm256_storeu_ps(to + 24, _mm256_permute2f128_ps(r2.v, r3.v, 0x31));
}

VOCAFADE_ALWAYS_INLINE Floats LoadQuarterRate(const float* from, int i) {
    from += i / 4;
    return {_mm256_set_m128(_mm_broadcast_ss(from + 1), _mm_broadcast_ss(from))};
}

} // namespace
} // namespace vocafade::kernels
