// SPDX-License-Identifier: MIT
#pragma once

// Four lanes in NEON registers (AArch64); `lanes_portable.h` says what each operation means.

#include "dsp/kernels/inlining.h"

#include <arm_neon.h>

namespace vocafade::kernels {
namespace {

using FloatVector = float32x4_t;
using DoubleVector = float64x2_t;

VOCAFADE_ALWAYS_INLINE float32x4_t Spread(float x) { return vdupq_n_f32(x); }
VOCAFADE_ALWAYS_INLINE float64x2_t Spread(double x) { return vdupq_n_f64(x); }
// The processor's own minimum and maximum would pass NaN on.
VOCAFADE_ALWAYS_INLINE float32x4_t Minimum(float32x4_t a, float32x4_t b) {
    return vbslq_f32(vcltq_f32(a, b), a, b);
}
VOCAFADE_ALWAYS_INLINE float64x2_t Minimum(float64x2_t a, float64x2_t b) {
    return vbslq_f64(vcltq_f64(a, b), a, b);
}
VOCAFADE_ALWAYS_INLINE float32x4_t Maximum(float32x4_t a, float32x4_t b) {
    return vbslq_f32(vcgtq_f32(a, b), a, b);
}
VOCAFADE_ALWAYS_INLINE float64x2_t Maximum(float64x2_t a, float64x2_t b) {
    return vbslq_f64(vcgtq_f64(a, b), a, b);
}
VOCAFADE_ALWAYS_INLINE float32x4_t Absolute(float32x4_t x) { return vabsq_f32(x); }
VOCAFADE_ALWAYS_INLINE float64x2_t Absolute(float64x2_t x) { return vabsq_f64(x); }
VOCAFADE_ALWAYS_INLINE float32x4_t TurnSign(float32x4_t x, float32x4_t sign) {
    const uint32x4_t turn = vandq_u32(vreinterpretq_u32_f32(sign), vdupq_n_u32(0x80000000U));
    return vreinterpretq_f32_u32(veorq_u32(vreinterpretq_u32_f32(x), turn));
}
VOCAFADE_ALWAYS_INLINE float64x2_t TurnSign(float64x2_t x, float64x2_t sign) {
    const uint64x2_t turn = vandq_u64(vreinterpretq_u64_f64(sign), vdupq_n_u64(0x8000000000000000ULL));
    return vreinterpretq_f64_u64(veorq_u64(vreinterpretq_u64_f64(x), turn));
}

} // namespace
} // namespace vocafade::kernels

// Needs the operations above.
#include "dsp/kernels/lanes_vectors.h"

namespace vocafade::kernels {
namespace {

VOCAFADE_ALWAYS_INLINE Floats SquareRoot(Floats x) { return {vsqrtq_f32(x.v)}; }
VOCAFADE_ALWAYS_INLINE Doubles Widen(Floats x) {
    return {vcvt_f64_f32(vget_low_f32(x.v)), vcvt_high_f64_f32(x.v)};
}
VOCAFADE_ALWAYS_INLINE Floats Narrow(Doubles x) { return {vcvt_high_f32_f64(vcvt_f32_f64(x.low), x.high)}; }

VOCAFADE_ALWAYS_INLINE Floats WhereNegative(Floats sign, Floats a, Floats b) {
    const uint32x4_t mask = vreinterpretq_u32_s32(vshrq_n_s32(vreinterpretq_s32_f32(sign.v), 31));
    return {vbslq_f32(mask, a.v, b.v)};
}

VOCAFADE_ALWAYS_INLINE Floats EvenWhole(Floats x) {
    const int32x4_t whole = vcvtq_s32_f32(vabsq_f32(x.v));
    const int32x4_t even = vandq_s32(vaddq_s32(whole, vdupq_n_s32(1)), vdupq_n_s32(~1));
    return {vbslq_f32(vdupq_n_u32(0x80000000U), x.v, vcvtq_f32_s32(even))};
}

VOCAFADE_ALWAYS_INLINE void StoreFirstPass(float* to, int p, Floats r0, Floats r1, Floats r2, Floats r3) {
    vst4q_f32(to + 4 * p, (float32x4x4_t{{r0.v, r1.v, r2.v, r3.v}}));
}

VOCAFADE_ALWAYS_INLINE void StoreSecondPass(float* to, int i, Floats r0, Floats r1, Floats r2, Floats r3) {
    to += 4 * i;
    vst1q_f32(to, r0.v);
    vst1q_f32(to + 4, r1.v);
    vst1q_f32(to + 8, r2.v);
    vst1q_f32(to + 12, r3.v);
}

VOCAFADE_ALWAYS_INLINE Floats LoadQuarterRate(const float* from, int i) {
    return {vld1q_dup_f32(from + i / 4)};
}

} // namespace
} // namespace vocafade::kernels
