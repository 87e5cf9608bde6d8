// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct pa_context;
struct pa_stream;
struct pa_threaded_mainloop;

namespace vocafade::command {

/// Stereo sound to the desktop's sound server, PulseAudio or PipeWire. Everything is [main-thread].
class PulseOutput {
  public:
    /// Fills interleaved stereo frames; called on a thread of its own, as soon as there is an output.
    using Fill = std::function<void(float* samples, std::size_t frames)>;

    /// Opens an output at `rate` Hz which is asked to hold `bufferSeconds`. Throws `Failure` when there is no
    /// server, or no device to play on.
    PulseOutput(int rate, double bufferSeconds, Fill fill);
    /// Ends it at once; what has not been heard by then is not heard any more.
    ~PulseOutput();
    PulseOutput(const PulseOutput&) = delete;
    PulseOutput& operator=(const PulseOutput&) = delete;

    /// Why nothing can be heard any more, or nothing while all is well: the server or the device has gone.
    std::optional<std::string> Loss();
    /// Seconds until what is filled in now is heard.
    double Latency();
    /// Frames that have been filled in.
    std::int64_t Filled();
    /// How many of them have left the loudspeakers for certain. Unlike `Latency` this is no estimate, which a gap
    /// would put ahead, but what the server told last; the call asks it anew.
    std::int64_t Heard();
    /// While held, nothing is asked for, and the device may sleep.
    void Hold(bool held);
    /// What the desktop shows beside the volume.
    void SetTitle(const std::string& title);
    /// The name of the device on which it plays, when it has moved there since the last call.
    std::optional<std::string> TakeDevice();
    /// How often the server had nothing to play.
    int underruns() const { return underruns_; }

  private:
    struct Callbacks;
    class Locked;

    void Connect(int rate, double bufferSeconds);
    void WaitFor(const std::function<bool()>& done, const char* what);
    void Close();
    void AskForDevice();
    std::string Reason() const;

    Fill fill_;
    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
    std::atomic<int> underruns_{0};
    bool held_ = false;
    std::int64_t filled_ = 0; ///< with the loop's lock, as the next two
    std::string device_;
    bool deviceIsNew_ = false;
};

} // namespace vocafade::command
