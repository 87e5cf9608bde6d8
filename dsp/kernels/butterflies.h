// SPDX-License-Identifier: MIT
#pragma once

// Four-point transforms with the positive exponent, on vectors (T = Floats) or single columns (T = float):
//
//   y[r] = sum over m of z[m] * i^(r m),    result[r] = y[r] * w[r]
//
// The sums and products are formed in the order of the scalar radix-4 transform, so each element has the same
// bits there and here (but for the sign of a zero).
//
// Included through phase_vocoder.h, after the lanes.

namespace vocafade::kernels {
namespace {

VOCAFADE_ALWAYS_INLINE float Negative(float x) { return -x; }

template <typename T>
T LoadAs(const float* from);
template <>
VOCAFADE_ALWAYS_INLINE float LoadAs<float>(const float* from) {
    return *from;
}
template <>
VOCAFADE_ALWAYS_INLINE Floats LoadAs<Floats>(const float* from) {
    return Load(from);
}

/// A complex array kept as two real ones.
struct Split {
    float* re;
    float* im;
};

template <typename T>
struct Complex {
    T re;
    T im;
};

template <typename T>
VOCAFADE_ALWAYS_INLINE Complex<T> operator*(const Complex<T>& w, const Complex<T>& y) {
    return {w.re * y.re - w.im * y.im, w.re * y.im + w.im * y.re};
}

template <typename T>
struct Four {
    Complex<T> y0, y1, y2, y3;
};

/// Elements a quarter of the length apart.
template <typename T>
VOCAFADE_ALWAYS_INLINE Four<T> LoadFour(Split x, int quarter) {
    const auto at = [&](int offset) {
        return Complex<T>{LoadAs<T>(x.re + offset), LoadAs<T>(x.im + offset)};
    };
    return {at(0), at(quarter), at(2 * quarter), at(3 * quarter)};
}

template <typename T>
VOCAFADE_ALWAYS_INLINE Four<T> Butterfly(const Four<T>& z) {
    const Complex<T> x0{z.y0.re + z.y2.re, z.y0.im + z.y2.im};
    const Complex<T> x1{z.y0.re - z.y2.re, z.y0.im - z.y2.im};
    const Complex<T> x2{z.y1.re + z.y3.re, z.y1.im + z.y3.im};
    const Complex<T> x3{z.y1.re - z.y3.re, z.y1.im - z.y3.im};
    return {{x0.re + x2.re, x0.im + x2.im},
            {x1.re - x3.im, x1.im + x3.re},
            {x0.re - x2.re, x0.im - x2.im},
            {x1.re + x3.im, x1.im - x3.re}};
}

/// The same where z[2] and z[3] are zero.
template <typename T>
VOCAFADE_ALWAYS_INLINE Four<T> ButterflyOfTwo(const Complex<T>& z0, const Complex<T>& z1) {
    return {{z0.re + z1.re, z0.im + z1.im},
            {z0.re - z1.im, z0.im + z1.re},
            {z0.re - z1.re, z0.im - z1.im},
            {z0.re + z1.im, z0.im - z1.re}};
}

template <typename T>
struct Factors {
    Complex<T> w1, w2, w3;
};

template <typename T>
VOCAFADE_ALWAYS_INLINE Four<T> Turn(const Four<T>& y, const Factors<T>& w) {
    return {y.y0, w.w1 * y.y1, w.w2 * y.y2, w.w3 * y.y3};
}

/// `Turn` by an eighth of a turn and its multiples, `c` being cos(pi/4): one product for each part.
template <typename T>
VOCAFADE_ALWAYS_INLINE Four<T> TurnByEighths(const Four<T>& y, T c) {
    return {y.y0,
            {c * (y.y1.re - y.y1.im), c * (y.y1.re + y.y1.im)},
            {Negative(y.y2.im), y.y2.re},
            {Negative(c) * (y.y3.re + y.y3.im), c * (y.y3.re - y.y3.im)}};
}

/// The factors of the groups that a vector's lanes belong to, one group a lane.
VOCAFADE_ALWAYS_INLINE Factors<Floats> LoadFactors(const PassTwiddles& pass, int p) {
    return {{Load(pass.w1r + p), Load(pass.w1i + p)},
            {Load(pass.w2r + p), Load(pass.w2i + p)},
            {Load(pass.w3r + p), Load(pass.w3i + p)}};
}

/// Stores the results of group `p` of the first pass, one group a lane.
VOCAFADE_ALWAYS_INLINE void StoreFirst(Split y, int p, const Four<Floats>& r) {
    StoreFirstPass(y.re, p, r.y0.re, r.y1.re, r.y2.re, r.y3.re);
    StoreFirstPass(y.im, p, r.y0.im, r.y1.im, r.y2.im, r.y3.im);
}

/// Stores four results `stride` apart.
VOCAFADE_ALWAYS_INLINE void StoreFour(Split y, int stride, const Four<Floats>& r) {
    const auto at = [&](int offset, const Complex<Floats>& value) {
        Store(y.re + offset, value.re);
        Store(y.im + offset, value.im);
    };
    at(0, r.y0);
    at(stride, r.y1);
    at(2 * stride, r.y2);
    at(3 * stride, r.y3);
}
VOCAFADE_ALWAYS_INLINE void StoreFour(Split y, int stride, const Four<float>& r) {
    const auto at = [&](int offset, const Complex<float>& value) {
        y.re[offset] = value.re;
        y.im[offset] = value.im;
    };
    at(0, r.y0);
    at(stride, r.y1);
    at(2 * stride, r.y2);
    at(3 * stride, r.y3);
}

} // namespace
} // namespace vocafade::kernels
