// SPDX-License-Identifier: MIT
#include "bench/plain_engine.h"

#include "bench/streaming.h"
#include "dsp/constants.h"
#include "dsp/fft.h"

#include <cmath>
#include <cstdint>

namespace vocafade::bench {
namespace {

constexpr float kSampleRate = 44100.0f;
constexpr float kBinWidth = kSampleRate / kFrameSize;
constexpr float kExpectedAdvance = static_cast<float>(kHop) * kTwoPi / kFrameSize;

float Folded(float phase) { return phase - std::nearbyint(phase / kTwoPi) * kTwoPi; }

class PlainEngine final : public StreamingEngine {
  public:
    PlainEngine() {
        left_.forward.Init(kFrameSize, true, true);
        left_.inverse.Init(kFrameSize, true, false);
        right_.forward.Init(kFrameSize, true, true);
        right_.inverse.Init(kFrameSize, true, false);
    }

  private:
    struct Channel {
        CFFT forward;
        CFFT inverse;
        float spectrum[2 * kFrameSize] = {};
        float phase[kBins] = {};
        float magnitude[kBins] = {};
        float trueFrequency[kBins] = {};
        float phaseSum[kBins] = {};
    };

    void ProcessFrame(const float* inputL, const float* inputR, float* accumulatorL,
                      float* accumulatorR) override {
        Analyse(inputL, left_);
        Analyse(inputR, right_);
        for (int k = 0; k < kBins; ++k) {
            const auto hertz = static_cast<std::uint32_t>(static_cast<float>(k + 1) * kBinWidth);
            if (hertz < kLowHertz || hertz > kHighHertz) continue;
            const float a = left_.magnitude[k];
            const float c = right_.magnitude[k];
            left_.magnitude[k] = a - c;
            right_.magnitude[k] = c - a;
        }
        Synthesise(left_, accumulatorL);
        Synthesise(right_, accumulatorR);
    }

    void Analyse(const float* input, Channel& c) const {
        for (int i = 0; i < kFrameSize; ++i) {
            c.spectrum[2 * i] = input[i] * window_[static_cast<std::size_t>(i)];
            c.spectrum[2 * i + 1] = 0.0f;
        }
        c.forward.ComplexFFT(c.spectrum);
        for (int k = 0; k < kBins; ++k) {
            const float re = c.spectrum[2 * k];
            const float im = c.spectrum[2 * k + 1];
            const float bin = static_cast<float>(k);
            c.magnitude[k] = std::sqrt(im * im + re * re);
            const float angle =
                static_cast<float>(std::atan2(static_cast<double>(im), static_cast<double>(re)));
            float d = angle - c.phase[k];
            c.phase[k] = angle;
            d = d - bin * kExpectedAdvance;
            int q = static_cast<int>(d / kPi);
            q = q >= 0 ? q + (q & 1) : q - (q & 1);
            d = d - static_cast<float>(q) * kPi;
            c.trueFrequency[k] = ((d * kOverlap / kTwoPi) + bin) * kBinWidth;
        }
    }

    void Synthesise(Channel& c, float* accumulator) const {
        std::fill(std::begin(c.spectrum), std::end(c.spectrum), 0.0f);
        for (int k = 0; k < kBins; ++k) {
            const float bin = static_cast<float>(k);
            const float deviation = (c.trueFrequency[k] - bin * kBinWidth) / kBinWidth;
            float sum = c.phaseSum[k];
            sum += deviation * kTwoPi / kOverlap + bin * kExpectedAdvance;
            sum = Folded(sum);
            sum += Folded(c.phase[k] - sum) / 16.0f;
            c.phaseSum[k] = sum;
            const double phase = sum;
            c.spectrum[2 * k] = static_cast<float>(std::cos(phase)) * c.magnitude[k];
            c.spectrum[2 * k + 1] = static_cast<float>(std::sin(phase)) * c.magnitude[k];
        }
        c.inverse.ComplexFFT(c.spectrum);
        for (int i = 0; i < kFrameSize; ++i) {
            accumulator[i] += c.spectrum[2 * i] * 4.0f * window_[static_cast<std::size_t>(i)] / kOverlap;
        }
    }

    Channel left_;
    Channel right_;
    std::vector<float> window_ = HannWindow();
};

} // namespace

std::vector<float> HannWindow() {
    std::vector<float> window(kFrameSize);
    for (std::size_t i = 0; i < window.size(); ++i) {
        const double turn = static_cast<double>(i) * static_cast<double>(kTwoPi) / kFrameSize;
        window[i] = static_cast<float>(0.5 - 0.5 * std::cos(turn));
    }
    return window;
}

std::unique_ptr<Engine> MakePlainEngine() { return std::make_unique<PlainEngine>(); }

} // namespace vocafade::bench
