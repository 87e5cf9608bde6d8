// SPDX-License-Identifier: MIT
#pragma once

// Eight lanes in AVX2 registers; `lanes_portable.h` says what each operation means.

#include "dsp/kernels/inlining.h"

#include <immintrin.h>

namespace vocafade::kernels {
namespace {

struct Floats {
    static constexpr int kLanes = 8;
    __m256 v;
};

struct Doubles {
    __m256d low;
    __m256d high;
};

VOCAFADE_ALWAYS_INLINE Floats Load(const float* from) { return {_mm256_loadu_ps(from)}; }
VOCAFADE_ALWAYS_INLINE void Store(float* to, Floats x) { _mm256_storeu_ps(to, x.v); }
VOCAFADE_ALWAYS_INLINE Doubles Load(const double* from) {
    return {_mm256_loadu_pd(from), _mm256_loadu_pd(from + 4)};
}
VOCAFADE_ALWAYS_INLINE void Store(double* to, Doubles x) {
    _mm256_storeu_pd(to, x.low);
    _mm256_storeu_pd(to + 4, x.high);
}
VOCAFADE_ALWAYS_INLINE Floats Broadcast(float x) { return {_mm256_set1_ps(x)}; }
VOCAFADE_ALWAYS_INLINE Doubles Broadcast(double x) { return {_mm256_set1_pd(x), _mm256_set1_pd(x)}; }
VOCAFADE_ALWAYS_INLINE Floats LaneNumbers() { return {_mm256_setr_ps(0, 1, 2, 3, 4, 5, 6, 7)}; }

VOCAFADE_ALWAYS_INLINE Floats operator+(Floats a, Floats b) { return {_mm256_add_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator-(Floats a, Floats b) { return {_mm256_sub_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator*(Floats a, Floats b) { return {_mm256_mul_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats operator/(Floats a, Floats b) { return {_mm256_div_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles operator+(Doubles a, Doubles b) {
    return {_mm256_add_pd(a.low, b.low), _mm256_add_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator-(Doubles a, Doubles b) {
    return {_mm256_sub_pd(a.low, b.low), _mm256_sub_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator*(Doubles a, Doubles b) {
    return {_mm256_mul_pd(a.low, b.low), _mm256_mul_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles operator/(Doubles a, Doubles b) {
    return {_mm256_div_pd(a.low, b.low), _mm256_div_pd(a.high, b.high)};
}

VOCAFADE_ALWAYS_INLINE Floats Negative(Floats x) { return {_mm256_xor_ps(x.v, _mm256_set1_ps(-0.0f))}; }
VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {_mm256_sqrt_ps(x.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Minimum(Floats a, Floats b) { return {_mm256_min_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Minimum(Doubles a, Doubles b) {
    return {_mm256_min_pd(a.low, b.low), _mm256_min_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Doubles Maximum(Doubles a, Doubles b) {
    return {_mm256_max_pd(a.low, b.low), _mm256_max_pd(a.high, b.high)};
}
VOCAFADE_ALWAYS_INLINE Floats Maximum(Floats a, Floats b) { return {_mm256_max_ps(a.v, b.v)}; }
VOCAFADE_ALWAYS_INLINE Floats Absolute(Floats x) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Absolute(Doubles x) {
    const __m256d sign = _mm256_set1_pd(-0.0);
    return {_mm256_andnot_pd(sign, x.low), _mm256_andnot_pd(sign, x.high)};
}

VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(x.v)), _mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1))};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) {
    return {_mm256_set_m128(_mm256_cvtpd_ps(x.high), _mm256_cvtpd_ps(x.low))};
}

VOCAFADE_ALWAYS_INLINE Floats TurnSign(Floats x, Floats sign) {
    return {_mm256_xor_ps(x.v, _mm256_and_ps(sign.v, _mm256_set1_ps(-0.0f)))};
}
VOCAFADE_ALWAYS_INLINE Doubles TurnSign(Doubles x, Doubles sign) {
    const __m256d bit = _mm256_set1_pd(-0.0);
    return {_mm256_xor_pd(x.low, _mm256_and_pd(sign.low, bit)),
            _mm256_xor_pd(x.high, _mm256_and_pd(sign.high, bit))};
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
