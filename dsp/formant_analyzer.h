// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/fft.h"

#include <vector>

namespace vocafade {

/// The spectral envelope (formant curve) of a magnitude spectrum, by cepstral smoothing: the logarithm of the
/// spectrum is transformed, only the slowest coefficients at both ends are kept, and the way back gives the
/// spectrum without its fine structure. Not for the audio thread; one object serves one thread at a time.
class CFormantAnalyzer {
  public:
    CFormantAnalyzer() = default;
    virtual ~CFormantAnalyzer() = default;

    /// [main-thread] Prepares for spectra of `n` points, a power of two of at least 2; they cover the whole
    /// circle, so the upper half mirrors the lower.
    void Init(int n);

    /// [main-thread] Writes the envelope of `spectrum` (n magnitudes, linear, not negative) to `envelope` (n
    /// floats), keeping `order` coefficients at each end; an order outside 0 to n counts as the nearest. A
    /// magnitude of 0 counts as 1. The way back raises the float 2.71828 instead of e; see
    /// docs/compatibility.md.
    ///
    /// The coefficients between the ends are zero only in the first call after `Init`. In every later one
    /// they are what the call before left there, its smoothed logarithm: callers that want a curve of one
    /// spectrum alone call `Init` first.
    void GetFormant(const float* spectrum, float* envelope, int order);

    /// [main-thread] Joins the peaks of `envelope` (n floats) by straight lines in `out`, from the first
    /// element to the last peak; what lies behind that peak is not written. Returns the last peak's value,
    /// envelope[0] when there is none. Whether the last element is a peak is decided by the one behind it:
    /// `envelope` must be readable at index n.
    float GetTrueFormant(const float* envelope, float* out) const;

    /// [main-thread] Scales n floats to a maximum of 10. There is no guard for a curve without a positive
    /// value, which becomes infinite or NaN.
    void Normalize(float* curve) const;

  private:
    void CalcFormant();

    std::vector<float> logSpectrum_; ///< n complex values, interleaved
    std::vector<float> cepstrum_;    ///< likewise
    int n_ = 0;
    int order_ = 0; ///< cepstral coefficients kept at each end
    CFFT inverse_;
    CFFT forward_;
};

} // namespace vocafade
