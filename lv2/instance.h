// SPDX-License-Identifier: MIT
#pragma once

#include "effect/avocafade.h"
#include "lv2/sound.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vocafade::lv2 {

/// Where what the user does in the editor goes.
class PortWriter {
  public:
    virtual ~PortWriter() = default;
    virtual void WritePort(std::int32_t parameter, float value) = 0; ///< [main-thread]
    virtual void TouchPort(std::int32_t parameter, bool held) = 0;   ///< [main-thread]
};

/// One plug-in of a host's: what sounds (`Sound`), and what is shown and saved: an effect with 64 programs
/// and the editor, which processes no audio. The ports join the two: the main thread brings what they say to
/// the effect that is shown, the editor writes what the user changes to them.
class Instance {
  public:
    /// [main-thread] `rate` in Hz; `bundle` is the folder of the plug-in, with a "/" at its end; `map` may be
    /// null, then there is no state.
    Instance(double rate, const char* bundle, const LV2_URID_Map* map);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    /// [main-thread] The instance that a host's handle stands for; null for any other pointer, such as that
    /// of a host which runs the editor in another process than the plug-in, or through a bridge of its own.
    static Instance* Find(void* handle);

    Sound& sound() { return sound_; }
    /// [main-thread] The effect that is shown.
    AVocafade& shown() { return *shown_; }
    /// [main-thread] Null for none. There is one editor at most. While there is one, the effect that is shown is
    /// this thread's alone.
    void SetPortWriter(PortWriter* writer);
    const PortWriter* portWriter() const { return writer_; }

    /// [main-thread] Brings what the audio thread has met (ports, meters) to the effect that is shown.
    void FollowSound();
    /// [main-thread] The host says that the port of `parameter` has this value.
    void FollowPort(std::int32_t parameter, float value);

    // State: state.cpp
    /// [any-thread] The 64 programs as one chunk; on another thread than the editor's as they were at its last idle.
    LV2_State_Status Save(LV2_State_Store_Function store, LV2_State_Handle handle);
    /// [any-thread] The ports win over the current program of the chunk. On another thread than the editor's it
    /// counts from the editor's next idle.
    LV2_State_Status Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);
    /// [main-thread] Takes over what another thread has restored, and lays out what it may save.
    void ExchangeState();

  private:
    using Clock = std::chrono::steady_clock;

    static VstIntPtr FromEffect(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value,
                                void* ptr, float opt);
    void Write(std::int32_t parameter);
    void WriteWhatDiffers();

    /// What the port of a parameter said that the shown value stands for.
    struct Agreement {
        float port; ///< NaN: nothing yet
        Clock::time_point
            writtenUntil;            ///< until then the host may still tell what it had before the user wrote
        Clock::time_point toldUntil; ///< until then the audio thread may still tell less than the host did
    };

    /// The programs on their way between the editor's thread, which may change them at any time, and others.
    struct Exchange {
        std::mutex lock;             ///< never held while the host is called
        std::thread::id panelThread; ///< of no thread while no editor is open
        ProgramSet programs;
        bool restored = false; ///< the effect that is shown does not have them yet
    };

    bool IsShownOurs() const; ///< as the next, with the lock held
    void ExchangeHeld();
    void Agree(std::int32_t parameter, const Agreement& agreement);
    void FollowSound(std::int32_t parameter, float port);

    std::string bundle_;
    Sound sound_;
    std::unique_ptr<AVocafade> shown_;
    PortWriter* writer_ = nullptr;
    std::array<Agreement, kParameterCount> agreed_{};
    std::uint32_t blocksSeen_ = 0;
    Exchange exchange_;
    const LV2_URID_Map* map_;
    Instance* older_ = nullptr; ///< in the register of all
};

} // namespace vocafade::lv2
