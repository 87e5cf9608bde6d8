// SPDX-License-Identifier: MIT
#include "dsp/fft.h"

#include <bit>
#include <cmath>
#include <utility>

namespace vocafade {
namespace {

/// Visits every pair of complex elements that bit reversal exchanges, by their float indices, and every
/// element that stays where it is. `ip` receives the reversed offsets of one digit group, about sqrt(n/2)
/// entries.
template <typename OnPair, typename OnFixed>
void VisitBitReversal(int n, int* ip, OnPair onPair, OnFixed onFixed) {
    ip[0] = 0;
    int l = n;
    int m = 1;
    while ((m << 3) < l) {
        l >>= 1;
        for (int j = 0; j < m; ++j) {
            ip[m + j] = ip[j] + l;
        }
        m <<= 1;
    }
    const int m2 = 2 * m;
    if ((m << 3) == l) { // an odd number of index bits is left over: four rows interleave
        for (int k = 0; k < m; ++k) {
            for (int j = 0; j < k; ++j) {
                const int j1 = 2 * j + ip[k];
                const int k1 = 2 * k + ip[j];
                onPair(j1, k1);
                onPair(j1 + m2, k1 + 2 * m2);
                onPair(j1 + 2 * m2, k1 + m2);
                onPair(j1 + 3 * m2, k1 + 3 * m2);
            }
            const int diagonal = 2 * k + ip[k];
            onFixed(diagonal);
            onPair(diagonal + m2, diagonal + 2 * m2);
            onFixed(diagonal + 3 * m2);
        }
    } else {
        for (int k = 0; k < m; ++k) {
            for (int j = 0; j < k; ++j) {
                const int j1 = 2 * j + ip[k];
                const int k1 = 2 * k + ip[j];
                onPair(j1, k1);
                onPair(j1 + m2, k1 + m2);
            }
            const int diagonal = 2 * k + ip[k];
            onFixed(diagonal);
            onFixed(diagonal + m2);
        }
    }
}

/// The four sums and differences that every radix-4 butterfly starts from, for elements a quarter apart.
struct Quartet {
    float x0r, x0i, x1r, x1i, x2r, x2i, x3r, x3i;

    Quartet(const float* a, int j, int l) {
        const int j1 = j + l;
        const int j2 = j1 + l;
        const int j3 = j2 + l;
        x0r = a[j] + a[j1];
        x0i = a[j + 1] + a[j1 + 1];
        x1r = a[j] - a[j1];
        x1i = a[j + 1] - a[j1 + 1];
        x2r = a[j2] + a[j3];
        x2i = a[j2 + 1] + a[j3 + 1];
        x3r = a[j2] - a[j3];
        x3i = a[j2 + 1] - a[j3 + 1];
    }
};

/// Butterfly whose twiddles are all 1.
void ButterflyPlain(float* a, int j, int l) {
    const Quartet q(a, j, l);
    const int j1 = j + l;
    const int j2 = j1 + l;
    const int j3 = j2 + l;
    a[j] = q.x0r + q.x2r;
    a[j + 1] = q.x0i + q.x2i;
    a[j2] = q.x0r - q.x2r;
    a[j2 + 1] = q.x0i - q.x2i;
    a[j1] = q.x1r - q.x3i;
    a[j1 + 1] = q.x1i + q.x3r;
    a[j3] = q.x1r + q.x3i;
    a[j3 + 1] = q.x1i - q.x3r;
}

/// The two-point butterfly that is left over where the length is no power of four.
void ButterflyOfTwo(float* a, int j, int l) {
    const float xr = a[j] - a[j + l];
    const float xi = a[j + 1] - a[j + l + 1];
    a[j] += a[j + l];
    a[j + 1] += a[j + l + 1];
    a[j + l] = xr;
    a[j + l + 1] = xi;
}

/// Butterfly of the second group, whose twiddles are an eighth of a turn and its multiples: `c` is cos(pi/4).
void ButterflyEighth(float* a, int j, int l, float c) {
    const Quartet q(a, j, l);
    const int j1 = j + l;
    const int j2 = j1 + l;
    const int j3 = j2 + l;
    a[j] = q.x0r + q.x2r;
    a[j + 1] = q.x0i + q.x2i;
    a[j2] = q.x2i - q.x0i;
    a[j2 + 1] = q.x0r - q.x2r;
    float yr = q.x1r - q.x3i;
    float yi = q.x1i + q.x3r;
    a[j1] = c * (yr - yi);
    a[j1 + 1] = c * (yr + yi);
    yr = q.x3i + q.x1r;
    yi = q.x3r - q.x1i;
    a[j3] = c * (yi - yr);
    a[j3 + 1] = c * (yi + yr);
}

struct Twiddles {
    float w1r, w1i, w2r, w2i, w3r, w3i;
};

/// Butterfly with general twiddles.
void Butterfly(float* a, int j, int l, const Twiddles& t) {
    const Quartet q(a, j, l);
    const int j1 = j + l;
    const int j2 = j1 + l;
    const int j3 = j2 + l;
    a[j] = q.x0r + q.x2r;
    a[j + 1] = q.x0i + q.x2i;
    float yr = q.x0r - q.x2r;
    float yi = q.x0i - q.x2i;
    a[j2] = t.w2r * yr - t.w2i * yi;
    a[j2 + 1] = t.w2r * yi + t.w2i * yr;
    yr = q.x1r - q.x3i;
    yi = q.x1i + q.x3r;
    a[j1] = t.w1r * yr - t.w1i * yi;
    a[j1 + 1] = t.w1r * yi + t.w1i * yr;
    yr = q.x1r + q.x3i;
    yi = q.x1i - q.x3r;
    a[j3] = t.w3r * yr - t.w3i * yi;
    a[j3 + 1] = t.w3r * yi + t.w3i * yr;
}

/// One radix-4 pass over `n` floats with elements `l` floats apart. Groups of 4l floats share their twiddles;
/// the table is in bit-reversed order, so consecutive groups read consecutive entries.
void RadixFourPass(int n, int l, float* a, const float* w) {
    const int m = l << 2;
    for (int j = 0; j < l; j += 2) {
        ButterflyPlain(a, j, l);
    }
    for (int j = m; j < l + m; j += 2) {
        ButterflyEighth(a, j, l, w[2]);
    }
    int k1 = 0;
    for (int k = 2 * m; k < n; k += 2 * m) {
        k1 += 2;
        const int k2 = 2 * k1;
        Twiddles t{};
        t.w2r = w[k1];
        t.w2i = w[k1 + 1];
        t.w1r = w[k2];
        t.w1i = w[k2 + 1];
        t.w3r = t.w1r - 2 * t.w2i * t.w1i;
        t.w3i = 2 * t.w2i * t.w1r - t.w1i;
        for (int j = k; j < l + k; j += 2) {
            Butterfly(a, j, l, t);
        }
        // The next group stands a quarter turn further at its second twiddle.
        t.w1r = w[k2 + 2];
        t.w1i = w[k2 + 3];
        t.w3r = t.w1r - 2 * t.w2r * t.w1i;
        t.w3i = 2 * t.w2r * t.w1r - t.w1i;
        t.w2r = -w[k1 + 1];
        t.w2i = w[k1];
        for (int j = k + m; j < l + k + m; j += 2) {
            Butterfly(a, j, l, t);
        }
    }
}

struct Pair {
    float re, im;
};

/// Visits the elements j and k of a half-length spectrum that mirror each other, by their float indices, with
/// their difference (real) and sum (imaginary) and the factor that makes a real transform of them.
template <typename OnPair>
void VisitRealPairs(int n, const float* a, int nc, const float* c, OnPair onPair) {
    const int step = 4 * nc / n;
    for (int j = 2, kk = step; j < n / 2; j += 2, kk += step) {
        const int k = n - j;
        onPair(j, k, {a[j] - a[k], a[j + 1] + a[k + 1]}, {0.5f - c[nc - kk], c[kk]});
    }
}

} // namespace

void CFFT::Init(int n, bool /*complex*/, bool forward) {
    forward_ = forward; // the tables serve both directions
    if (n == n_) return;
    n_ = n >= 2 && n <= kMostPoints && std::has_single_bit(static_cast<unsigned>(n)) ? n : 0;
    if (n_ == 0) return;
    ip_.assign(static_cast<std::size_t>(std::sqrt(n)) + 2, 0);
    w_.assign(static_cast<std::size_t>(n) * 3 / 4, 0.0f); // n / 2 of the transform, n / 4 of the split
    makewt(n / 2, ip_.data(), w_.data());
    makect(n / 4, ip_.data(), w_.data() + n / 2);
}

void CFFT::ComplexFFT(float* a) {
    if (n_ == 0) return;
    cdft(2 * n_, forward_ ? -1 : 1, a, ip_.data(), w_.data());
    if (forward_) return;
    const float scale = 1.0f / static_cast<float>(n_);
    for (int i = 0; i < 2 * n_; ++i) {
        a[i] *= scale;
    }
}

void CFFT::RealFFT(float* a) {
    if (n_ != 0) rdft(n_, 1, a, ip_.data(), w_.data());
}

void CFFT::cdft(int n, int sign, float* a, int* ip, float* w) {
    if (n > (ip[0] << 2)) makewt(n >> 2, ip, w);
    if (n > 4) {
        if (sign >= 0) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
        } else {
            bitrv2conj(n, ip + 2, a);
            cftbsub(n, a, w);
        }
    } else if (n == 4) {
        cftfsub(n, a, w);
    }
}

void CFFT::rdft(int n, int sign, float* a, int* ip, float* w) {
    if (n > (ip[0] << 2)) makewt(n >> 2, ip, w);
    const int nw = ip[0];
    if (n > (ip[1] << 2)) makect(n >> 2, ip, w + nw);
    const int nc = ip[1];
    if (sign >= 0) {
        if (n > 4) {
            bitrv2(n, ip + 2, a);
            cftfsub(n, a, w);
            rftfsub(n, a, nc, w + nw);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
        const float difference = a[0] - a[1];
        a[0] += a[1];
        a[1] = difference;
    } else {
        a[1] = 0.5f * (a[0] - a[1]);
        a[0] -= a[1];
        if (n > 4) {
            rftbsub(n, a, nc, w + nw);
            bitrv2(n, ip + 2, a);
            cftbsub(n, a, w);
        } else if (n == 4) {
            cftfsub(n, a, w);
        }
    }
}

void CFFT::makewt(int nw, int* ip, float* w) {
    ip[0] = nw;
    ip[1] = 1;
    if (nw <= 2) return;
    const int nwh = nw >> 1;
    // The angles are formed in single precision, their cosines and sines in double.
    const float delta = std::atan(1.0f) / static_cast<float>(nwh);
    const auto cosine = [delta](int j) {
        return static_cast<float>(std::cos(static_cast<double>(delta * static_cast<float>(j))));
    };
    const auto sine = [delta](int j) {
        return static_cast<float>(std::sin(static_cast<double>(delta * static_cast<float>(j))));
    };
    w[0] = 1;
    w[1] = 0;
    w[nwh] = cosine(nwh);
    w[nwh + 1] = w[nwh];
    if (nwh <= 2) return;
    for (int j = 2; j < nwh; j += 2) {
        w[j] = cosine(j);
        w[j + 1] = sine(j);
        w[nw - j] = w[j + 1];
        w[nw - j + 1] = w[j];
    }
    bitrv2(nw, ip + 2, w);
}

void CFFT::makect(int nc, int* ip, float* c) {
    ip[1] = nc;
    if (nc <= 1) return;
    const int nch = nc >> 1;
    const float delta = std::atan(1.0f) / static_cast<float>(nch);
    c[0] = static_cast<float>(std::cos(static_cast<double>(delta * static_cast<float>(nch))));
    c[nch] = 0.5f * c[0];
    for (int j = 1; j < nch; ++j) {
        const double angle = static_cast<double>(delta * static_cast<float>(j));
        c[j] = static_cast<float>(0.5 * std::cos(angle));
        c[nc - j] = static_cast<float>(0.5 * std::sin(angle));
    }
}

void CFFT::bitrv2(int n, int* ip, float* a) {
    VisitBitReversal(
        n, ip,
        [a](int j, int k) {
            std::swap(a[j], a[k]);
            std::swap(a[j + 1], a[k + 1]);
        },
        [](int) {});
}

void CFFT::bitrv2conj(int n, int* ip, float* a) {
    VisitBitReversal(
        n, ip,
        [a](int j, int k) {
            std::swap(a[j], a[k]);
            const float imaginary = a[j + 1];
            a[j + 1] = -a[k + 1];
            a[k + 1] = -imaginary;
        },
        [a](int i) { a[i + 1] = -a[i + 1]; });
}

int CFFT::AllPassesButTheLast(int n, float* a, const float* w) {
    int l = 2;
    if (n > 8) {
        cft1st(n, a, w);
        l = 8;
        while ((l << 2) < n) {
            cftmdl(n, l, a, w);
            l <<= 2;
        }
    }
    return l;
}

void CFFT::cftfsub(int n, float* a, const float* w) {
    const int l = AllPassesButTheLast(n, a, w);
    for (int j = 0; j < l; j += 2) {
        if (4 * l == n) {
            ButterflyPlain(a, j, l);
        } else {
            ButterflyOfTwo(a, j, l);
        }
    }
}

void CFFT::cftbsub(int n, float* a, const float* w) {
    cftfsub(n, a, w);
    // The data stand conjugated since the bit reversal.
    for (int i = 1; i < n; i += 2) {
        a[i] = -a[i];
    }
}

void CFFT::cft1st(int n, float* a, const float* w) { cftmdl(n, 2, a, w); }

void CFFT::cftmdl(int n, int l, float* a, const float* w) { RadixFourPass(n, l, a, w); }

void CFFT::rftfsub(int n, float* a, int nc, const float* c) {
    VisitRealPairs(n, a, nc, c, [a](int j, int k, Pair x, Pair w) {
        const float yr = w.re * x.re - w.im * x.im;
        const float yi = w.re * x.im + w.im * x.re;
        a[j] -= yr;
        a[j + 1] -= yi;
        a[k] += yr;
        a[k + 1] -= yi;
    });
}

void CFFT::rftbsub(int n, float* a, int nc, const float* c) {
    a[1] = -a[1];
    VisitRealPairs(n, a, nc, c, [a](int j, int k, Pair x, Pair w) {
        const float yr = w.re * x.re + w.im * x.im;
        const float yi = w.re * x.im - w.im * x.re;
        a[j] -= yr;
        a[j + 1] = yi - a[j + 1];
        a[k] += yr;
        a[k + 1] = yi - a[k + 1];
    });
    a[n / 2 + 1] = -a[n / 2 + 1];
}

} // namespace vocafade
