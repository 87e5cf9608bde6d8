// SPDX-License-Identifier: MIT
#pragma once

// The two transforms of a frame of N points:
//
//   Forward: X[k] = sum over j of f[j] w[j] exp(-2 pi i j k / N), k below N/2, of a real frame f
//   Inverse: f[j] = real part of sum over k below N/2 of Y[k] exp(2 pi i j k / N)
//
// Both go through passes of radix-4 butterflies. With P groups and s = N / (4 P) columns, a pass is
//
//   y[q + s (4 p + r)] = w(p)^r * sum over m of x[q + s p + m N/4] * i^(r m)
//
// for columns q below s and groups p below P: decimation in frequency that leaves each pass in the order in
// which the next one reads it, so that no bit reversal is needed. Vectors run along the columns. The first
// pass has one column and the second four, fewer than the lanes: there they run along the groups, too.
//
// Forward is the conjugate of the positive-exponent transform of the (equal) conjugated input. Its first pass
// knows that the imaginary parts are zero, its last one leaves out the upper half, the mirrored lower one.
// The first pass of Inverse knows that the upper half is zero, its last one forms real parts only.
//
// Included through phase_vocoder.h, after the lanes.

#include "dsp/kernels/butterflies.h"

namespace vocafade::kernels {
namespace {

inline void SecondPass(const TransformTables& tables, Split x, Split y) {
    const PassTwiddles& pass = tables.pass[1];
    const int quarter = tables.size / 4;
    for (int i = 0; i < quarter; i += Floats::kLanes) {
        const Factors<Floats> w{{LoadQuarterRate(pass.w1r, i), LoadQuarterRate(pass.w1i, i)},
                                {LoadQuarterRate(pass.w2r, i), LoadQuarterRate(pass.w2i, i)},
                                {LoadQuarterRate(pass.w3r, i), LoadQuarterRate(pass.w3i, i)}};
        const auto r = Turn(Butterfly(LoadFour<Floats>({x.re + i, x.im + i}, quarter)), w);
        StoreSecondPass(y.re, i, r.y0.re, r.y1.re, r.y2.re, r.y3.re);
        StoreSecondPass(y.im, i, r.y0.im, r.y1.im, r.y2.im, r.y3.im);
    }
    // The middle group turns by eighths, which rounds otherwise than the general product.
    for (int q = 0; q < 4; ++q) {
        const int from = quarter / 2 + q;
        const int to = tables.size / 2 + q;
        StoreFour(
            {y.re + to, y.im + to}, 4,
            TurnByEighths(Butterfly(LoadFour<float>({x.re + from, x.im + from}, quarter)), tables.eighth));
    }
}

/// One group of a later pass: `turn` multiplies by its twiddles.
template <typename TurnGroup>
VOCAFADE_ALWAYS_INLINE void LaterGroup(int quarter, int columns, Split x, Split y, TurnGroup turn) {
    for (int q = 0; q < columns; q += Floats::kLanes) {
        const auto z = LoadFour<Floats>({x.re + q, x.im + q}, quarter);
        StoreFour({y.re + q, y.im + q}, columns, turn(Butterfly(z)));
    }
}

inline void LaterPass(const TransformTables& tables, const PassTwiddles& pass, Split x, Split y) {
    using Results = Four<Floats>;
    const int quarter = tables.size / 4;
    const int columns = quarter / pass.groups;
    const Floats c = Broadcast(tables.eighth);
    for (int p = 0; p < pass.groups; ++p) {
        const Split from{x.re + p * columns, x.im + p * columns};
        const Split to{y.re + 4 * p * columns, y.im + 4 * p * columns};
        if (p == 0) {
            LaterGroup(quarter, columns, from, to, [](const Results& r) { return r; });
        } else if (p == pass.groups / 2) {
            LaterGroup(quarter, columns, from, to, [c](const Results& r) { return TurnByEighths(r, c); });
        } else {
            const Factors<Floats> w{{Broadcast(pass.w1r[p]), Broadcast(pass.w1i[p])},
                                    {Broadcast(pass.w2r[p]), Broadcast(pass.w2i[p])},
                                    {Broadcast(pass.w3r[p]), Broadcast(pass.w3i[p])}};
            LaterGroup(quarter, columns, from, to, [&w](const Results& r) { return Turn(r, w); });
        }
    }
}

/// Runs all passes but the first and the last, from `x` to `y` and back in turns; returns where the result
/// is.
inline Split MiddlePasses(const TransformTables& tables, Split x, Split y) {
    SecondPass(tables, x, y);
    for (int i = 2; i < tables.passes; ++i) {
        const Split from = y;
        y = x;
        x = from;
        LaterPass(tables, tables.pass[i], x, y);
    }
    return y;
}

/// The last eight points of one column: the results of the two four-point transforms of the last twiddled
/// pass, whose sums are the column's results 0 to 3 and whose differences results 4 to 7.
VOCAFADE_ALWAYS_INLINE void LastEight(const TransformTables& tables, Split x, int q, Four<Floats>& even,
                                      Four<Floats>& odd) {
    const int quarter = tables.size / 4;
    const int next = q + tables.size / 8;
    even = Butterfly(LoadFour<Floats>({x.re + q, x.im + q}, quarter));
    odd = TurnByEighths(Butterfly(LoadFour<Floats>({x.re + next, x.im + next}, quarter)),
                        Broadcast(tables.eighth));
}

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
