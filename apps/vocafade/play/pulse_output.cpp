// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/pulse_output.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/session_times.h"
#include "base/utf8.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <pulse/pulseaudio.h>
#include <thread>

namespace vocafade::command {
namespace {

constexpr std::size_t kFrameBytes = 2 * sizeof(float);

} // namespace

/// Holds the lock of the loop's thread.
class PulseOutput::Locked {
  public:
    explicit Locked(pa_threaded_mainloop* loop) : loop_(loop) { ::pa_threaded_mainloop_lock(loop_); }
    ~Locked() { ::pa_threaded_mainloop_unlock(loop_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    pa_threaded_mainloop* loop_;
};

/// What the library calls, on the loop's thread, which has the lock.
struct PulseOutput::Callbacks {
    static void Write(pa_stream* stream, std::size_t bytes, void* self) {
        auto* output = static_cast<PulseOutput*>(self);
        while (bytes >= kFrameBytes) {
            void* memory = nullptr;
            std::size_t room = bytes;
            if (::pa_stream_begin_write(stream, &memory, &room) != 0 || memory == nullptr) return;
            const std::size_t frames = std::min(room, bytes) / kFrameBytes;
            if (frames == 0) {
                ::pa_stream_cancel_write(stream);
                return;
            }
            output->fill_(static_cast<float*>(memory), frames);
            if (::pa_stream_write(stream, memory, frames * kFrameBytes, nullptr, 0, PA_SEEK_RELATIVE) != 0)
                return;
            output->filled_ += static_cast<std::int64_t>(frames);
            bytes -= frames * kFrameBytes;
        }
    }
    static void Underflow(pa_stream*, void* self) {
        auto* output = static_cast<PulseOutput*>(self);
        if (!output->held_) ++output->underruns_;
    }
    static void Moved(pa_stream*, void* self) { static_cast<PulseOutput*>(self)->AskForDevice(); }
    static void TellDevice(pa_context*, const pa_sink_info* sink, int, void* self) {
        auto* output = static_cast<PulseOutput*>(self);
        if (sink == nullptr || sink->description == nullptr || output->device_ == sink->description) return;
        output->deviceIsNew_ = !output->device_.empty();
        output->device_ = sink->description;
    }
};

PulseOutput::PulseOutput(int rate, double bufferSeconds, Fill fill)
    : fill_(std::move(fill)), loop_(::pa_threaded_mainloop_new()) {
    if (loop_ == nullptr) throw Failure("no thread can be started for the sound");
    try {
        Connect(rate, bufferSeconds);
    } catch (...) {
        Close();
        throw;
    }
}

PulseOutput::~PulseOutput() { Close(); }

void PulseOutput::Close() {
    {
        const Locked lock(loop_);
        if (stream_ != nullptr) {
            ::pa_stream_set_write_callback(stream_, nullptr, nullptr);
            ::pa_stream_set_underflow_callback(stream_, nullptr, nullptr);
            ::pa_stream_set_moved_callback(stream_, nullptr, nullptr);
            ::pa_stream_disconnect(stream_);
            ::pa_stream_unref(stream_);
        }
        if (context_ != nullptr) {
            ::pa_context_disconnect(context_);
            ::pa_context_unref(context_);
        }
    }
    ::pa_threaded_mainloop_stop(loop_);
    ::pa_threaded_mainloop_free(loop_);
}

std::string PulseOutput::Reason() const {
    return context_ != nullptr ? ::pa_strerror(::pa_context_errno(context_)) : "no memory";
}

/// Waits, without the lock, until `done` says so with the lock.
void PulseOutput::WaitFor(const std::function<bool()>& done, const char* what) {
    const auto end = std::chrono::steady_clock::now() + kAnswerTime;
    for (;;) {
        {
            const Locked lock(loop_);
            if (done()) return;
        }
        ThrowIfInterrupted();
        if (std::chrono::steady_clock::now() > end) throw Failure(fmt::format("{} does not answer", what));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void PulseOutput::Connect(int rate, double bufferSeconds) {
    {
        pa_proplist* properties = ::pa_proplist_new();
        ::pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Vocafade");
        ::pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "jp.velmorax.vocafade");
        ::pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, "jp.velmorax.vocafade");
        context_ =
            ::pa_context_new_with_proplist(::pa_threaded_mainloop_get_api(loop_), "Vocafade", properties);
        ::pa_proplist_free(properties);
    }
    if (context_ == nullptr || ::pa_context_connect(context_, nullptr, PA_CONTEXT_NOFLAGS, nullptr) < 0 ||
        ::pa_threaded_mainloop_start(loop_) < 0)
        throw Failure("no sound server can be reached: " + Reason());
    WaitFor(
        [&] {
            const pa_context_state_t state = ::pa_context_get_state(context_);
            if (!PA_CONTEXT_IS_GOOD(state)) throw Failure("no sound server can be reached: " + Reason());
            return state == PA_CONTEXT_READY;
        },
        "the sound server");
    {
        const Locked lock(loop_);
        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(rate), 2};
        pa_proplist* properties = ::pa_proplist_new();
        ::pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, "music");
        stream_ = ::pa_sample_spec_valid(&format) != 0
                      ? ::pa_stream_new_with_proplist(context_, "Vocafade", &format, nullptr, properties)
                      : nullptr;
        ::pa_proplist_free(properties);
        if (stream_ == nullptr) throw Failure(fmt::format("the sound server does not take {} Hz", rate));
        ::pa_stream_set_write_callback(stream_, Callbacks::Write, this);
        ::pa_stream_set_underflow_callback(stream_, Callbacks::Underflow, this);
        ::pa_stream_set_moved_callback(stream_, Callbacks::Moved, this);
        pa_buffer_attr buffer{};
        buffer.maxlength = buffer.prebuf = buffer.minreq = buffer.fragsize = static_cast<std::uint32_t>(-1);
        buffer.tlength = static_cast<std::uint32_t>(bufferSeconds * rate) * kFrameBytes;
        const auto flags = static_cast<pa_stream_flags_t>(
            PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE);
        if (::pa_stream_connect_playback(stream_, nullptr, &buffer, flags, nullptr, nullptr) < 0)
            throw Failure("there is no sound output: " + Reason());
    }
    WaitFor(
        [&] {
            const pa_stream_state_t state = ::pa_stream_get_state(stream_);
            if (!PA_STREAM_IS_GOOD(state)) throw Failure("there is no sound output: " + Reason());
            return state == PA_STREAM_READY;
        },
        "the sound server");
    const Locked lock(loop_);
    AskForDevice();
}

std::optional<std::string> PulseOutput::Loss() {
    const Locked lock(loop_);
    if (!PA_CONTEXT_IS_GOOD(::pa_context_get_state(context_))) return "the sound server has gone away";
    if (!PA_STREAM_IS_GOOD(::pa_stream_get_state(stream_))) return "the sound device has gone away";
    return std::nullopt;
}

double PulseOutput::Latency() {
    const Locked lock(loop_);
    pa_usec_t latency = 0;
    int negative = 0;
    if (::pa_stream_get_latency(stream_, &latency, &negative) != 0 || negative != 0) return 0.0;
    return static_cast<double>(latency) / 1e6;
}

std::int64_t PulseOutput::Filled() {
    const Locked lock(loop_);
    return filled_;
}

std::int64_t PulseOutput::Heard() {
    const Locked lock(loop_);
    const pa_timing_info* timing = ::pa_stream_get_timing_info(stream_);
    std::int64_t heard = 0;
    if (timing != nullptr && timing->read_index_corrupt == 0) {
        const std::size_t onItsWay =
            ::pa_usec_to_bytes(timing->sink_usec, ::pa_stream_get_sample_spec(stream_));
        heard = (timing->read_index - static_cast<std::int64_t>(onItsWay)) /
                static_cast<std::int64_t>(kFrameBytes);
    }
    if (pa_operation* operation = ::pa_stream_update_timing_info(stream_, nullptr, nullptr))
        ::pa_operation_unref(operation);
    return heard;
}

void PulseOutput::Hold(bool held) {
    const Locked lock(loop_);
    held_ = held;
    if (pa_operation* operation = ::pa_stream_cork(stream_, held ? 1 : 0, nullptr, nullptr))
        ::pa_operation_unref(operation);
}

void PulseOutput::SetTitle(const std::string& title) {
    const Locked lock(loop_);
    if (pa_operation* operation = ::pa_stream_set_name(stream_, ValidUtf8(title).c_str(), nullptr, nullptr))
        ::pa_operation_unref(operation);
}

void PulseOutput::AskForDevice() {
    const std::uint32_t index = ::pa_stream_get_device_index(stream_);
    if (pa_operation* operation =
            ::pa_context_get_sink_info_by_index(context_, index, Callbacks::TellDevice, this))
        ::pa_operation_unref(operation);
}

std::optional<std::string> PulseOutput::TakeDevice() {
    const Locked lock(loop_);
    if (!deviceIsNew_) return std::nullopt;
    deviceIsNew_ = false;
    return device_;
}

} // namespace vocafade::command
