// SPDX-License-Identifier: MIT
#include "bench/library_engine.h"

#include "bench/streaming.h"
#include "dsp/constants.h"

#include <fftw3.h>
#include <immintrin.h>
#include <sleef.h>

namespace vocafade::bench {
namespace {

constexpr float kSampleRate = 44100.0f;
constexpr float kBinWidth = kSampleRate / kFrameSize;
constexpr float kExpectedAdvance = static_cast<float>(kHop) * kTwoPi / kFrameSize;

/// Memory aligned as FFTW's vector code wants it.
class FftwFloats {
  public:
    explicit FftwFloats(std::size_t count) : data_(fftwf_alloc_real(count)) {
        std::fill_n(data_, count, 0.0f);
    }
    ~FftwFloats() { fftwf_free(data_); }
    FftwFloats(const FftwFloats&) = delete;
    FftwFloats& operator=(const FftwFloats&) = delete;
    float* get() const { return data_; }

  private:
    float* data_;
};

__m256 JoinFloats(__m256d low, __m256d high) {
    return _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low));
}

__m256d LowDoubles(__m256 v) { return _mm256_cvtps_pd(_mm256_castps256_ps128(v)); }
__m256d HighDoubles(__m256 v) { return _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)); }

__m256 Folded(__m256 phase) {
    const __m256 twoPi = _mm256_set1_ps(kTwoPi);
    const __m256 turns =
        _mm256_round_ps(_mm256_div_ps(phase, twoPi), _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    return _mm256_sub_ps(phase, _mm256_mul_ps(turns, twoPi));
}

class LibraryEngine final : public StreamingEngine {
  public:
    LibraryEngine() {
        auto* bins = reinterpret_cast<fftwf_complex*>(left_.bins.get());
        // Any channel's arrays serve: they are aligned alike.
        forward_ = fftwf_plan_dft_r2c_1d(kFrameSize, left_.frame.get(), bins, FFTW_PATIENT);
        inverse_ = fftwf_plan_dft_c2r_1d(kFrameSize, bins, left_.frame.get(), FFTW_PATIENT);
        const auto window = HannWindow();
        for (std::size_t i = 0; i < window.size(); ++i) {
            window_.get()[i] = window[i];
            synthesisWindow_.get()[i] = window[i] * (4.0f / kFrameSize / kOverlap);
        }
        for (int k = 0; k < kBins; ++k) {
            bin_.get()[k] = static_cast<float>(k);
        }
        std::fill_n(left_.frame.get(), kFrameSize, 0.0f);
        std::fill_n(left_.bins.get(), 2 * (kBins + 1), 0.0f);
    }
    ~LibraryEngine() override {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
    }
    LibraryEngine(const LibraryEngine&) = delete;
    LibraryEngine& operator=(const LibraryEngine&) = delete;

  private:
    struct Channel {
        FftwFloats frame{kFrameSize};
        FftwFloats bins{static_cast<std::size_t>(2 * (kBins + 1))};
        FftwFloats phase{kBins};
        FftwFloats magnitude{kBins};
        FftwFloats trueFrequency{kBins};
        FftwFloats phaseSum{kBins};
    };

    void ProcessFrame(const float* inputL, const float* inputR, float* accumulatorL,
                      float* accumulatorR) override {
        Analyse(inputL, left_);
        Analyse(inputR, right_);
        Remove();
        Synthesise(left_, accumulatorL);
        Synthesise(right_, accumulatorR);
    }

    void Analyse(const float* input, Channel& c) {
        for (int i = 0; i < kFrameSize; i += 8) {
            _mm256_store_ps(c.frame.get() + i,
                            _mm256_mul_ps(_mm256_loadu_ps(input + i), _mm256_load_ps(window_.get() + i)));
        }
        fftwf_execute_dft_r2c(forward_, c.frame.get(), reinterpret_cast<fftwf_complex*>(c.bins.get()));
        const __m256 pi = _mm256_set1_ps(kPi);
        const __m256 sign = _mm256_set1_ps(-0.0f);
        for (int k = 0; k < kBins; k += 8) {
            const __m256 a = _mm256_load_ps(c.bins.get() + 2 * k);
            const __m256 b = _mm256_load_ps(c.bins.get() + 2 * k + 8);
            const __m256 even = _mm256_permute2f128_ps(a, b, 0x20);
            const __m256 odd = _mm256_permute2f128_ps(a, b, 0x31);
            const __m256 re = _mm256_shuffle_ps(even, odd, 0x88);
            const __m256 im = _mm256_shuffle_ps(even, odd, 0xdd);
            _mm256_store_ps(c.magnitude.get() + k,
                            _mm256_sqrt_ps(_mm256_add_ps(_mm256_mul_ps(im, im), _mm256_mul_ps(re, re))));
            const __m256 phase = JoinFloats(Sleef_atan2d4_u35avx2(LowDoubles(im), LowDoubles(re)),
                                            Sleef_atan2d4_u35avx2(HighDoubles(im), HighDoubles(re)));
            const __m256 bin = _mm256_load_ps(bin_.get() + k);
            __m256 d = _mm256_sub_ps(phase, _mm256_load_ps(c.phase.get() + k));
            _mm256_store_ps(c.phase.get() + k, phase);
            d = _mm256_sub_ps(d, _mm256_mul_ps(bin, _mm256_set1_ps(kExpectedAdvance)));
            const __m256 turns = _mm256_div_ps(d, pi);
            const __m256i whole = _mm256_cvttps_epi32(_mm256_andnot_ps(sign, turns));
            const __m256i even32 = _mm256_add_epi32(whole, _mm256_and_si256(whole, _mm256_set1_epi32(1)));
            const __m256 q = _mm256_or_ps(_mm256_cvtepi32_ps(even32), _mm256_and_ps(sign, turns));
            d = _mm256_sub_ps(d, _mm256_mul_ps(q, pi));
            d = _mm256_div_ps(_mm256_mul_ps(d, _mm256_set1_ps(kOverlap)), _mm256_set1_ps(kTwoPi));
            _mm256_store_ps(c.trueFrequency.get() + k,
                            _mm256_mul_ps(_mm256_add_ps(d, bin), _mm256_set1_ps(kBinWidth)));
        }
    }

    void Remove() {
        for (int k = 0; k < kBins; k += 8) {
            const __m256 upper = _mm256_add_ps(_mm256_load_ps(bin_.get() + k), _mm256_set1_ps(1.0f));
            const __m256i hertz = _mm256_cvttps_epi32(_mm256_mul_ps(upper, _mm256_set1_ps(kBinWidth)));
            const __m256i outside = _mm256_or_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(kLowHertz), hertz),
                                                    _mm256_cmpgt_epi32(hertz, _mm256_set1_epi32(kHighHertz)));
            const __m256 mask = _mm256_castsi256_ps(outside);
            const __m256 a = _mm256_load_ps(left_.magnitude.get() + k);
            const __m256 c = _mm256_load_ps(right_.magnitude.get() + k);
            _mm256_store_ps(left_.magnitude.get() + k, _mm256_blendv_ps(_mm256_sub_ps(a, c), a, mask));
            _mm256_store_ps(right_.magnitude.get() + k, _mm256_blendv_ps(_mm256_sub_ps(c, a), c, mask));
        }
    }

    void Synthesise(Channel& c, float* accumulator) {
        const __m256 twoPi = _mm256_set1_ps(kTwoPi);
        const __m256 binWidth = _mm256_set1_ps(kBinWidth);
        for (int k = 0; k < kBins; k += 8) {
            const __m256 bin = _mm256_load_ps(bin_.get() + k);
            const __m256 deviation = _mm256_div_ps(
                _mm256_sub_ps(_mm256_load_ps(c.trueFrequency.get() + k), _mm256_mul_ps(bin, binWidth)),
                binWidth);
            const __m256 advance =
                _mm256_add_ps(_mm256_div_ps(_mm256_mul_ps(deviation, twoPi), _mm256_set1_ps(kOverlap)),
                              _mm256_mul_ps(bin, _mm256_set1_ps(kExpectedAdvance)));
            __m256 sum = Folded(_mm256_add_ps(_mm256_load_ps(c.phaseSum.get() + k), advance));
            const __m256 apart = Folded(_mm256_sub_ps(_mm256_load_ps(c.phase.get() + k), sum));
            sum = _mm256_add_ps(sum, _mm256_mul_ps(apart, _mm256_set1_ps(1.0f / 16.0f)));
            _mm256_store_ps(c.phaseSum.get() + k, sum);
            const auto low = Sleef_sincosd4_u35avx2(LowDoubles(sum));
            const auto high = Sleef_sincosd4_u35avx2(HighDoubles(sum));
            // The real transform counts every bin but the first twice.
            const __m256 amplitude =
                _mm256_mul_ps(_mm256_load_ps(c.magnitude.get() + k), _mm256_set1_ps(0.5f));
            const __m256 re = _mm256_mul_ps(JoinFloats(low.y, high.y), amplitude);
            const __m256 im = _mm256_mul_ps(JoinFloats(low.x, high.x), amplitude);
            const __m256 even = _mm256_unpacklo_ps(re, im);
            const __m256 odd = _mm256_unpackhi_ps(re, im);
            _mm256_store_ps(c.bins.get() + 2 * k, _mm256_permute2f128_ps(even, odd, 0x20));
            _mm256_store_ps(c.bins.get() + 2 * k + 8, _mm256_permute2f128_ps(even, odd, 0x31));
        }
        c.bins.get()[0] *= 2.0f;
        c.bins.get()[2 * kBins] = 0.0f;
        c.bins.get()[2 * kBins + 1] = 0.0f;
        fftwf_execute_dft_c2r(inverse_, reinterpret_cast<fftwf_complex*>(c.bins.get()), c.frame.get());
        for (int i = 0; i < kFrameSize; i += 8) {
            const __m256 windowed =
                _mm256_mul_ps(_mm256_load_ps(c.frame.get() + i), _mm256_load_ps(synthesisWindow_.get() + i));
            _mm256_storeu_ps(accumulator + i, _mm256_add_ps(_mm256_loadu_ps(accumulator + i), windowed));
        }
    }

    Channel left_;
    Channel right_;
    FftwFloats window_{kFrameSize};
    FftwFloats synthesisWindow_{kFrameSize};
    FftwFloats bin_{kBins};
    fftwf_plan forward_ = nullptr;
    fftwf_plan inverse_ = nullptr;
};

} // namespace

std::unique_ptr<Engine> MakeLibraryEngine() {
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) return nullptr;
    return std::make_unique<LibraryEngine>();
}

} // namespace vocafade::bench
