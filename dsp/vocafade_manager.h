// SPDX-License-Identifier: MIT
#pragma once

#include "base/critical_section.h"
#include "base/wave_format.h"
#include "dsp/vocafade_unit.h"

#include <cstdint>

namespace vocafade {

/// The engine's front: the effect hands it parameters, the stream's format and blocks of audio. It owns one
/// `CVocafadeUnit` and the lock that serialises every access to it, so setters may be called from any thread
/// while audio runs.
class CVocafadeManager {
  public:
    /// Samples in a frame, and how many frames cover each sample.
    static constexpr int kFrameSize = 2048;
    static constexpr int kOverlap = 6;

    CVocafadeManager() = default;
    virtual ~CVocafadeManager() = default;
    CVocafadeManager(const CVocafadeManager&) = delete;
    CVocafadeManager& operator=(const CVocafadeManager&) = delete;

    /// [any-thread] Lets `Transform` process, or leave its outputs alone. What is in flight stays, so that
    /// the tail of the old audio plays out first when processing is switched on again.
    bool set_Activate(bool on);
    /// [any-thread] A plain factor on the input.
    bool set_InputLevel(float level);
    /// [any-thread] A factor on the output; the unit adds its own of 1.7.
    bool set_OutputLevel(float level);
    /// [any-thread] Upper limit of the band in Hz, inclusive.
    bool set_VocafadeHiFS(unsigned hertz);
    /// [any-thread] Lower limit of the band in Hz, inclusive.
    bool set_VocafadeLoFS(unsigned hertz);
    /// [any-thread] Place in the stereo image that is removed: 1 (left; lower counts as 1), 64 (centre
    /// exactly) to 127 (right). The balance is (127 - position) / position.
    bool set_LRate(int position);

    /// [main-thread] Takes the stream's format and starts the engine anew: audio in flight is dropped and the
    /// balance returns to the centre until the next `set_LRate`. Levels and band limits stay.
    bool SetMediaType(const tWAVEFORMATEX* format);
    /// [any-thread] Takes the size of blocks to come. Nothing depends on it: the unit writes straight into
    /// the outputs, so there are no work arrays to make or to free.
    bool SetSampleSize(unsigned /*count*/) { return true; }
    /// [any-thread] See `SetSampleSize`.
    bool FreeWorkArea() { return true; }

    /// [audio-thread] Processes one block: in[0], in[1] left and right input, out[0], out[1] the outputs,
    /// which may be the inputs. `produced` receives `count`. The outputs are not written while processing is
    /// off. Silence before the first `SetMediaType`. Allocates nothing, whatever the size of the block.
    bool Transform(float** in, int count, float** out, int* produced);

  private:
    CCriticalSection lock_;
    bool active_ = true;
    std::uint32_t lowHertz_ = 0;
    std::uint32_t highHertz_ = 0;
    CVocafadeUnit unit_;
};

} // namespace vocafade
