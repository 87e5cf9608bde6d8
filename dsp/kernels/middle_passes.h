// SPDX-License-Identifier: MIT
#pragma once

// The passes between the first and the last of a transform. With P groups and s = N / (4 P) columns,
//
//   y[q + s (4 p + r)] = w(p)^r * sum over m of x[q + s p + m N/4] * i^(r m)
//
// for columns q below s and groups p below P: decimation in frequency that leaves each pass in the order in
// which the next one reads it, so that no bit reversal is needed. Vectors run along the columns, except in
// the second pass, whose four columns are fewer than the lanes: there they run along columns and groups
// together.
//
// Included through kernel_set_body.h, after the lanes.

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

} // namespace
} // namespace vocafade::kernels
