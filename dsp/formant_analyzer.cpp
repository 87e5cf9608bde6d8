// SPDX-License-Identifier: MIT
#include "dsp/formant_analyzer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vocafade {
namespace {

/// Not quite e; see docs/compatibility.md.
constexpr float kBase = 2.71828f;

} // namespace

void CFormantAnalyzer::Init(int n) {
    n_ = n;
    logSpectrum_.assign(2 * static_cast<std::size_t>(n), 0.0f);
    cepstrum_.assign(2 * static_cast<std::size_t>(n), 0.0f);
    forward_.Init(n, true, true);
    inverse_.Init(n, true, false);
}

void CFormantAnalyzer::GetFormant(const float* spectrum, float* envelope, int order) {
    order_ = std::clamp(order, 0, n_);
    const auto points = static_cast<std::size_t>(n_);
    for (std::size_t k = 0; k < points; ++k) {
        logSpectrum_[2 * k] =
            spectrum[k] != 0.0f ? static_cast<float>(std::log(static_cast<double>(spectrum[k]))) : 0.0f;
        logSpectrum_[2 * k + 1] = 0.0f;
    }
    if (points != 0) CalcFormant();
    for (std::size_t k = 0; k < points; ++k) {
        envelope[k] =
            static_cast<float>(std::pow(static_cast<double>(kBase), static_cast<double>(cepstrum_[2 * k])));
    }
}

void CFormantAnalyzer::CalcFormant() {
    forward_.ComplexFFT(logSpectrum_.data());
    const auto kept = 2 * static_cast<std::ptrdiff_t>(order_);
    std::copy(logSpectrum_.begin(), logSpectrum_.begin() + kept, cepstrum_.begin());
    std::copy(logSpectrum_.end() - kept, logSpectrum_.end(), cepstrum_.end() - kept);
    inverse_.ComplexFFT(cepstrum_.data());
}

float CFormantAnalyzer::GetTrueFormant(const float* envelope, float* out) const {
    if (n_ == 0) return 0.0f;
    float lastValue = envelope[0];
    int lastIndex = 0;
    for (int k = 1; k < n_; ++k) {
        if (!(envelope[k] > envelope[k - 1] && envelope[k] > envelope[k + 1])) continue;
        const int distance = k - lastIndex;
        for (int j = 0; j < distance; ++j) {
            out[lastIndex + j] =
                static_cast<float>(j) / static_cast<float>(distance) * (envelope[k] - lastValue) + lastValue;
        }
        lastValue = envelope[k];
        lastIndex = k;
    }
    return lastValue;
}

void CFormantAnalyzer::Normalize(float* curve) const {
    float largest = 0.0f;
    for (int k = 0; k < n_; ++k) {
        largest = std::max(largest, curve[k]);
    }
    for (int k = 0; k < n_; ++k) {
        curve[k] = curve[k] / largest * 10.0f;
    }
}

} // namespace vocafade
