// SPDX-License-Identifier: MIT
#pragma once

#include "base/critical_section.h"
#include "dsp/aligned_floats.h"
#include "dsp/kernels/frame_transform.h"
#include "dsp/kernels/kernel_set.h"

#include <cstdint>

namespace vocafade {

/// Takes the part of a stereo stream away that stands at one place of the stereo image inside a frequency
/// band.
///
/// Both streams are cut into overlapping Hann-windowed frames. A phase vocoder gives each frame's magnitude
/// and true frequency in every bin; in the band, each channel's magnitude is reduced by the other's; the rest
/// is resynthesised with running phases and overlap-added. Samples go in and come out one for one, later by
/// `Latency()`; the caller's block size does not matter.
///
/// The formulas are in `kernels/phase_vocoder.h`.
///
/// Its gain, where nothing is removed and the overlap is 6: Hann windows on the way in and out leave 3/8 of
/// the mean power, six frames lie over each sample, the overlap-add takes 4/6, the output 170/100, and the
/// real part of half a spectrum is half the signal: 3/8 * 6 * 4/6 * 1.7 / 2 = 1.275. Of that 0.6 % are never
/// heard: a frame's first hop has been sent out before the frame is complete, so five frames sound, not six.
///
/// [audio-thread] for `Operate`, [any-thread] for the setters; the owner holds its lock around every call,
/// `GetOverLevel` and `SetOverFlag` excepted, which take it themselves.
class CVocafadeUnit {
  public:
    /// The arithmetic runs on the kernels `set`; all sets sound the same to the bit.
    explicit CVocafadeUnit(const kernels::KernelSet& set = kernels::ChosenKernels()) : kernels_(set) {}
    virtual ~CVocafadeUnit() = default;
    CVocafadeUnit(const CVocafadeUnit&) = delete;
    CVocafadeUnit& operator=(const CVocafadeUnit&) = delete;

    /// Starts anew: all audio in flight is dropped, phases return to zero, balance to 1 (the centre). Levels
    /// and band limits stay. `frameSize` is a power of two of 2 to `CFFT::kMostPoints`; with any other number
    /// the unit is silent, as before the first `Init`. `sampleRate` is in Hz; it and `overlap` count as 1
    /// below that, and a hop is one sample at least. Allocates only when `frameSize` changes.
    void Init(int frameSize, int sampleRate, int overlap, CCriticalSection* lock);

    /// [audio-thread] Consumes `count` samples of both inputs, writes as many to both outputs (which may be
    /// the inputs) and reports `count` in `produced`. Below 1 it does nothing else. NaN, and samples too
    /// large for a spectrum in single precision (beyond 1e15), count as silence.
    void Operate(const float* inL, const float* inR, int count, float* outL, float* outR, int* produced);

    /// Factor applied to every incoming sample.
    void SetInputLevel(float level) { inputLevel_ = level; }
    /// Factor applied to every outgoing sample, on top of the unit's own 1.7.
    void SetOutputLevel(float level) { outputLevel_ = level * 170.0f / 100.0f; }
    /// Limits of the band in Hz, both inclusive; an upper limit below the lower one removes nothing.
    void SetCancelFS(unsigned low, unsigned high);
    /// The left-to-right magnitude ratio of what is removed; 1 is the centre.
    void SetLRBalance(float balance) { balance_ = balance; }

    /// [any-thread] Reads the clip flag into `over` and clears it.
    void GetOverLevel(bool* over);
    /// [any-thread] Sets the clip flag.
    void SetOverFlag();

    /// Samples from input to output: frame size minus hop.
    int Latency() const { return frameSize_ - hop_; }

    /// Does nothing.
    void Vocafade() {}

  private:
    /// One channel's arrays, in the order in which data meets them.
    struct Channel {
        AlignedFloats input;      ///< frame size
        AlignedFloats spectrumRe; ///< half the frame size, as the next five
        AlignedFloats spectrumIm;
        AlignedFloats phase; ///< of the frame that was analysed last
        AlignedFloats magnitude;
        AlignedFloats trueFrequency;
        AlignedFloats phaseSum;
        AlignedFloats output; ///< overlap-add accumulator, frame size

        void Init(int frameSize);
    };

    void ProcessFrame();
    void GetTrueSpectra();      ///< both inputs' windowed frames to magnitudes and true frequencies
    void CreateShiftedVector(); ///< removal, then resynthesis at the running phases
    void AddFrame(Channel& channel);
    kernels::Removal RemovalOfBand() const;

    const kernels::KernelSet& kernels_;
    float inputLevel_ = 1.0f;
    float outputLevel_ = 170.0f / 100.0f;
    bool over_ = false;
    CCriticalSection* lock_ = nullptr;
    int frameSize_ = 0;
    int hop_ = 0;
    kernels::VocoderConstants vocoder_{};
    kernels::FrameTransform transform_;
    float balance_ = 1.0f;
    std::uint32_t lowHertz_ = 0;
    std::uint32_t highHertz_ = 0;
    Channel left_;
    Channel right_;
    AlignedFloats window_;
    AlignedFloats frame_; ///< a resynthesised frame on its way to the accumulator
    int readPosition_ = 0;
    int writePosition_ = 0;
    int silentLead_ = 0; ///< samples of the next frame that stand for time before the first output
};

} // namespace vocafade
