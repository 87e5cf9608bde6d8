// SPDX-License-Identifier: MIT
#pragma once

// The transform of a real, windowed frame: X[k] = sum over j of f[j] w[j] exp(-2 pi i j k / N), k below N/2.
//
// It is the conjugate of the positive-exponent transform of the (equal) conjugated input. The first pass
// knows that the imaginary parts are zero, the last one leaves out the upper half, which is the mirrored
// lower one.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/kernels/middle_passes.h"

namespace vocafade::kernels {
namespace {

/// Real elements a quarter apart, windowed, and the sums and differences that a butterfly of them begins
/// with.
template <typename T>
struct RealFour {
    T x0, x1, x2, x3;

    VOCAFADE_ALWAYS_INLINE RealFour(const float* input, const float* window, int quarter) {
        const auto at = [&](int offset) { return LoadAs<T>(input + offset) * LoadAs<T>(window + offset); };
        const T z0 = at(0);
        const T z1 = at(quarter);
        const T z2 = at(2 * quarter);
        const T z3 = at(3 * quarter);
        x0 = z0 + z2;
        x1 = z0 - z2;
        x2 = z1 + z3;
        x3 = z1 - z3;
    }
};

inline void ForwardFirstPass(const TransformTables& tables, const float* input, const float* window,
                             Split y) {
    const PassTwiddles& pass = tables.pass[0];
    const int quarter = tables.size / 4;
    // Conjugated, the input's imaginary parts are negative zeros, and so are their sums.
    const Floats none = Broadcast(-0.0f);
    for (int p = 0; p < quarter; p += Floats::kLanes) {
        const RealFour<Floats> f(input + p, window + p, quarter);
        const Factors<Floats> w = LoadFactors(pass, p);
        const Floats y2 = f.x0 - f.x2;
        StoreFirst(y, p,
                   {{f.x0 + f.x2, none},
                    {w.w1.re * f.x1 - w.w1.im * f.x3, w.w1.re * f.x3 + w.w1.im * f.x1},
                    {w.w2.re * y2, w.w2.im * y2},
                    {w.w3.re * f.x1 + w.w3.im * f.x3, w.w3.im * f.x1 - w.w3.re * f.x3}});
    }
    // The middle group turns by eighths, which rounds otherwise than the general product.
    const int middle = quarter / 2;
    const RealFour<float> f(input + middle, window + middle, quarter);
    const Four<float> sums{{f.x0 + f.x2, -0.0f}, {f.x1, f.x3}, {f.x0 - f.x2, 0.0f}, {f.x1, -f.x3}};
    StoreFour({y.re + 4 * middle, y.im + 4 * middle}, 1, TurnByEighths(sums, tables.eighth));
}

inline void ForwardLastPass(const TransformTables& tables, Split x, float* re, float* im) {
    const auto store = [&](int k, Floats real, Floats imaginary) {
        Store(re + k, real);
        Store(im + k, imaginary);
    };
    if (tables.lastIs8) {
        const int s = tables.size / 8;
        for (int q = 0; q < s; q += Floats::kLanes) {
            Four<Floats> a;
            Four<Floats> b;
            LastEight(tables, x, q, a, b);
            store(q, a.y0.re + b.y0.re, Negative(a.y0.im) - b.y0.im);
            store(q + s, a.y1.re + b.y1.re, Negative(a.y1.im) - b.y1.im);
            store(q + 2 * s, a.y2.re + b.y2.re, Negative(a.y2.im) - b.y2.im);
            store(q + 3 * s, a.y3.re + b.y3.re, Negative(a.y3.im) - b.y3.im);
        }
    } else {
        const int s = tables.size / 4;
        for (int q = 0; q < s; q += Floats::kLanes) {
            const auto r = Butterfly(LoadFour<Floats>({x.re + q, x.im + q}, s));
            store(q, r.y0.re, Negative(r.y0.im));
            store(q + s, r.y1.re, Negative(r.y1.im));
        }
    }
}

void Forward(const TransformTables& tables, const float* input, const float* window, float* work, float* re,
             float* im) {
    const int n = tables.size;
    const Split first{work, work + n};
    const Split second{work + 2 * n, work + 3 * n};
    ForwardFirstPass(tables, input, window, first);
    ForwardLastPass(tables, MiddlePasses(tables, first, second), re, im);
}

} // namespace
} // namespace vocafade::kernels
