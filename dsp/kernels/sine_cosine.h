// SPDX-License-Identifier: MIT
#pragma once

// Sine and cosine of a folded phase, |x| <= pi (and a few last places more). Both are sines of an angle in
// [-pi/2, pi/2], found without branches:
//
//   cos x = S(pi/2 - |x|),   sin x = sign(x) S(min(|x|, pi - |x|)),   S(t) = t * B(t^2)
//
// where B, of degree 6, was fitted to sin(t) / t for the least greatest relative error, 2^-43. The relative
// error is what counts: next to their zeros both functions keep all the digits of a float.
//
// Included through kernel_set_body.h, after the lanes.

#include "dsp/kernels/polynomial.h"

namespace vocafade::kernels {
namespace {

constexpr double kSine[] = {0.9999999999999376,      -0.1666666666643233,   0.008333333318765478,
                            -0.00019841266411613407, 2.755693192575586e-06, -2.5029518830600788e-08,
                            1.5401169840699647e-10};

struct SineCosine {
    Floats sine;
    Floats cosine;
};

VOCAFADE_ALWAYS_INLINE SineCosine OfFoldedPhase(Floats x) {
    constexpr double pi = 3.141592653589793;
    const Doubles size = Widen(Absolute(x));
    const Doubles forCosine = Broadcast(pi / 2) - size;
    const Doubles forSine = Minimum(size, Broadcast(pi) - size);
    return {TurnSign(Narrow(forSine * Polynomial(kSine, forSine * forSine)), x),
            Narrow(forCosine * Polynomial(kSine, forCosine * forCosine))};
}

} // namespace
} // namespace vocafade::kernels
