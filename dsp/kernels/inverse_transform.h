// SPDX-License-Identifier: MIT
#pragma once

// Back from a spectrum to a frame: f[j] = real part of sum over k below N/2 of Y[k] exp(2 pi i j k / N).
//
// The first pass knows that the upper half of the spectrum is zero, the last one forms real parts only.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/kernels/middle_passes.h"

namespace vocafade::kernels {
namespace {

inline void InverseFirstPass(const TransformTables& tables, const float* re, const float* im, Split y) {
    const int quarter = tables.size / 4;
    for (int p = 0; p < quarter; p += Floats::kLanes) {
        const Complex<Floats> z0{Load(re + p), Load(im + p)};
        const Complex<Floats> z1{Load(re + p + quarter), Load(im + p + quarter)};
        StoreFirst(y, p, Turn(ButterflyOfTwo(z0, z1), LoadFactors(tables.pass[0], p)));
    }
    // The middle group turns by eighths, which rounds otherwise than the general product.
    const int middle = quarter / 2;
    const Complex<float> z0{re[middle], im[middle]};
    const Complex<float> z1{re[middle + quarter], im[middle + quarter]};
    StoreFour({y.re + 4 * middle, y.im + 4 * middle}, 1,
              TurnByEighths(ButterflyOfTwo(z0, z1), tables.eighth));
}

inline void InverseLastPass(const TransformTables& tables, Split x, float* frame) {
    if (tables.lastIs8) {
        const int s = tables.size / 8;
        for (int q = 0; q < s; q += Floats::kLanes) {
            Four<Floats> a;
            Four<Floats> b;
            LastEight(tables, x, q, a, b);
            Store(frame + q, a.y0.re + b.y0.re);
            Store(frame + q + s, a.y1.re + b.y1.re);
            Store(frame + q + 2 * s, a.y2.re + b.y2.re);
            Store(frame + q + 3 * s, a.y3.re + b.y3.re);
            Store(frame + q + 4 * s, a.y0.re - b.y0.re);
            Store(frame + q + 5 * s, a.y1.re - b.y1.re);
            Store(frame + q + 6 * s, a.y2.re - b.y2.re);
            Store(frame + q + 7 * s, a.y3.re - b.y3.re);
        }
    } else {
        const int s = tables.size / 4;
        for (int q = 0; q < s; q += Floats::kLanes) {
            const auto r = Butterfly(LoadFour<Floats>({x.re + q, x.im + q}, s));
            Store(frame + q, r.y0.re);
            Store(frame + q + s, r.y1.re);
            Store(frame + q + 2 * s, r.y2.re);
            Store(frame + q + 3 * s, r.y3.re);
        }
    }
}

void Inverse(const TransformTables& tables, const float* re, const float* im, float* work, float* frame) {
    const int n = tables.size;
    const Split first{work, work + n};
    const Split second{work + 2 * n, work + 3 * n};
    InverseFirstPass(tables, re, im, first);
    InverseLastPass(tables, MiddlePasses(tables, first, second), frame);
}

} // namespace
} // namespace vocafade::kernels
