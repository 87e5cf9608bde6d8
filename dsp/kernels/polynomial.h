// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::kernels {
namespace {

/// c[0] + c[1] z + ... + c[N - 1] z^(N - 1), highest power first, every product rounded before its sum.
template <int N>
Doubles Polynomial(const double (&c)[N], Doubles z) {
    Doubles sum = Broadcast(c[N - 1]);
    for (int i = N - 2; i >= 0; --i) {
        sum = sum * z + Broadcast(c[i]);
    }
    return sum;
}

} // namespace
} // namespace vocafade::kernels
