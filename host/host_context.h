// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace vocafade::host {

/// Hears what one effect tells its host. Every function has a do-nothing form; each may be called on whatever
/// thread the effect chooses.
class HostListener {
  public:
    virtual ~HostListener() = default;
    /// The effect (its editor, as a rule) moved parameter `index` to the normalised `value`.
    virtual void ParameterAutomated(std::int32_t /*index*/, float /*value*/) {}
    virtual void EditBegun(std::int32_t /*index*/) {}
    virtual void EditEnded(std::int32_t /*index*/) {}
    /// Names, programs or values may have changed: read them again.
    virtual void DisplayChanged() {}
    /// The editor wants `width` by `height` pixels; true when it gets them.
    virtual bool ResizeEditor(std::int32_t /*width*/, std::int32_t /*height*/) { return false; }
    /// The effect waits inside one of its calls and wants events handled meanwhile.
    virtual void Idle() {}
};

/// What one effect may ask of its host: the answers behind the callback. It outlives the effect.
class HostContext {
  public:
    HostContext(std::string directory, double sampleRate, std::int32_t blockSize, HostListener* listener);
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    /// [any-thread] The callback that every entry point is given. Works while an effect is being constructed
    /// (no descriptor yet): it then answers for the context that its thread is constructing with.
    static VstIntPtr Callback(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value,
                              void* ptr, float opt);

    /// Makes `context` the one that answers on this thread as long as it lives.
    class Constructing {
      public:
        explicit Constructing(HostContext& context);
        ~Constructing();
        Constructing(const Constructing&) = delete;
        Constructing& operator=(const Constructing&) = delete;

      private:
        HostContext* previous_;
    };

    /// Marks this thread as one that processes audio for as long as it lives.
    class Processing {
      public:
        Processing();
        ~Processing();
        Processing(const Processing&) = delete;
        Processing& operator=(const Processing&) = delete;

      private:
        bool previous_;
    };

    /// [main-thread] From now on the descriptor leads back here.
    void Attach(AEffect* effect);

    void setSampleRate(double rate) { sampleRate_ = rate; }
    void setBlockSize(std::int32_t samples) { blockSize_ = samples; }
    void setPlaying(bool playing);
    /// [audio-thread] Moves the song position on by `samples`.
    void Advance(std::int32_t samples) { position_ += samples; }

  private:
    VstIntPtr Answer(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr, float opt);
    VstTimeInfo* TimeInfo();

    std::string directory_;
    std::atomic<double> sampleRate_; ///< Hz
    std::atomic<std::int32_t> blockSize_;
    std::atomic<std::int64_t> position_{0}; ///< samples since the last start
    std::atomic<bool> playing_{false};
    std::atomic<bool> transportChanged_{false};
    HostListener* const listener_;
};

} // namespace vocafade::host
