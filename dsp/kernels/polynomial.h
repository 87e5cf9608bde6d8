// SPDX-License-Identifier: MIT
#pragma once

// c[0] + c[1] z + ... + c[N - 1] z^(N - 1), by halves: the lower ones plus a power of z times the upper ones,
// and so on down to pairs. It costs a product or two more than the usual nested form, but its longest chain
// of dependent operations is a third as long, and those chains are what the kernels wait for.
//
// Included through kernel_set_body.h, after the lanes.

namespace vocafade::kernels {
namespace {

/// `c` points to N coefficients; powers[i] is z to the power of 2^i.
template <int N>
VOCAFADE_ALWAYS_INLINE Doubles PolynomialPart(const double* c, const Doubles* powers) {
    if constexpr (N == 1) {
        return Broadcast(c[0]);
    } else {
        constexpr int step = N > 4 ? 2 : (N > 2 ? 1 : 0);
        constexpr int half = 1 << step;
        return PolynomialPart<half>(c, powers) + PolynomialPart<N - half>(c + half, powers) * powers[step];
    }
}

template <int N>
VOCAFADE_ALWAYS_INLINE Doubles Polynomial(const double (&c)[N], Doubles z) {
    static_assert(N > 4 && N <= 8);
    const Doubles squared = z * z;
    const Doubles powers[] = {z, squared, squared * squared};
    return PolynomialPart<N>(c, powers);
}

} // namespace
} // namespace vocafade::kernels
