// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace vocafade {

/// A fast Fourier transform of one length and one direction, in place and in single precision: decimation in
/// time with radix-4 butterflies (one radix-2 pass where the length asks for it), after T. Ooura's
/// general-purpose package. Tables are built by `Init`; a transform allocates nothing. The engine has
/// transforms of its own (`kernels/transforms.h`), which use these tables and give the same bits.
///
/// [audio-thread] for the transforms, [main-thread] for `Init`; one object serves one thread at a time.
class CFFT {
  public:
    /// The longest transform, in points.
    static constexpr int kMostPoints = 1 << 29;

    CFFT() = default;
    virtual ~CFFT() = default;

    /// Builds the tables for `n` points, a power of two of 2 to `kMostPoints`. With another `n` there are
    /// none, and transforms leave their data alone, as before the first call. `complex` changes nothing: the
    /// tables serve complex values and real samples. May be called again; for the same length it allocates
    /// nothing.
    void Init(int n, bool complex, bool forward);

    /// Transforms `n` complex values, interleaved (real, imaginary), 2n floats in natural order both ways.
    /// Forward: X[k] = sum x[j] exp(-2 pi i j k / n), unscaled. Inverse: the positive exponent, scaled by
    /// 1/n, so that a forward and an inverse object undo each other.
    void ComplexFFT(float* a);

    /// Transforms `n` real samples, unscaled, whatever the kind and direction given to `Init`: a[0] = R[0],
    /// a[1] = R[n/2], a[2k] = R[k], a[2k+1] = I[k] with R[k] = sum a[j] cos(2 pi j k / n) and
    /// I[k] = sum a[j] sin(2 pi j k / n) (the positive sine).
    void RealFFT(float* a);

    /// Number of points that there are tables for, 0 without any.
    int Points() const { return n_; }
    /// The twiddle table in bit-reversed order, for kernels that run the same transform their own way.
    const float* Twiddles() const { return w_.data(); }

  private:
    // Lengths below count floats, so a complex transform of n points has 2n.
    static void cdft(int n, int sign, float* a, int* ip, float* w);
    static void rdft(int n, int sign, float* a, int* ip, float* w);
    static void makewt(int nw, int* ip, float* w);
    static void makect(int nc, int* ip, float* c);
    static void bitrv2(int n, int* ip, float* a);
    static void bitrv2conj(int n, int* ip, float* a);
    /// Answers how far apart the last pass's elements are.
    static int AllPassesButTheLast(int n, float* a, const float* w);
    static void cftfsub(int n, float* a, const float* w);
    static void cftbsub(int n, float* a, const float* w);
    static void cft1st(int n, float* a, const float* w);
    static void cftmdl(int n, int l, float* a, const float* w);
    static void rftfsub(int n, float* a, int nc, const float* c);
    static void rftbsub(int n, float* a, int nc, const float* c);

    std::vector<int> ip_;  ///< table lengths in the first two, then the bit-reversal work area
    std::vector<float> w_; ///< cosines and sines: of the complex transform, then those that a real one adds
    int n_ = 0;
    bool forward_ = false;
};

} // namespace vocafade
