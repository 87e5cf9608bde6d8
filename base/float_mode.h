// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vocafade {

/// [audio-thread] From its construction to the end of its scope, floating point rounds to nearest, traps
/// nothing and takes denormal numbers as zero, so that silence costs no more time than sound and a host's own
/// settings change no bit of the output. The caller's mode comes back afterwards.
class AudioFloatMode {
  public:
#if defined(__SSE2__)
    AudioFloatMode() : saved_(_mm_getcsr()) {
        constexpr unsigned allExceptionsMasked = 0x1F80; // with rounding to nearest
        constexpr unsigned flushToZero = 0x8000;
        constexpr unsigned denormalsAreZero = 0x0040;
        _mm_setcsr(allExceptionsMasked | flushToZero | denormalsAreZero);
    }
    ~AudioFloatMode() { _mm_setcsr(saved_); }

  private:
    unsigned saved_;
#elif defined(__aarch64__)
    AudioFloatMode() {
        asm volatile("mrs %0, fpcr" : "=r"(saved_));
        constexpr std::uint64_t flushToZero = 1ull << 24; // all else zero: to nearest, no traps
        asm volatile("msr fpcr, %0" : : "r"(flushToZero));
    }
    ~AudioFloatMode() { asm volatile("msr fpcr, %0" : : "r"(saved_)); }

  private:
    std::uint64_t saved_ = 0;
#else
    AudioFloatMode() {}
    ~AudioFloatMode() {}
#endif

  public:
    AudioFloatMode(const AudioFloatMode&) = delete;
    AudioFloatMode& operator=(const AudioFloatMode&) = delete;
};

} // namespace vocafade
