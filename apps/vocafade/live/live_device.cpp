// SPDX-License-Identifier: MIT
#include "apps/vocafade/live/live_device.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/session_times.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <fmt/format.h>
#include <spa/param/audio/format-utils.h>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vocafade::command {
namespace {

constexpr std::size_t kBytesAFrame = 2 * sizeof(float);
constexpr const char* kDefaultKey = "default.audio.sink";               // what is the default now
constexpr const char* kConfiguredKey = "default.configured.audio.sink"; // what the user has chosen
constexpr std::size_t kPodBytes = 1024;

/// The device's name in what the session manager writes: {"name":"..."}.
std::string NameIn(const char* json) {
    const std::string_view text = json != nullptr ? json : "";
    const std::size_t key = text.find("\"name\"");
    if (key == std::string_view::npos) return {};
    const std::size_t begin = text.find('"', text.find(':', key));
    if (begin == std::string_view::npos) return {};
    return std::string(text.substr(begin + 1, text.find('"', begin + 1) - begin - 1));
}

/// Room for a message, and what it is built with.
struct Pod {
    Pod() { ::spa_pod_builder_init(&builder, room.data(), room.size()); }
    std::array<std::uint8_t, kPodBytes> room{};
    spa_pod_builder builder{};
};

const spa_pod* BuildFormat(Pod& pod, int rate) {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = static_cast<std::uint32_t>(rate);
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    return ::spa_format_audio_raw_build(&pod.builder, SPA_PARAM_EnumFormat, &format);
}

} // namespace

/// Holds the lock of the loop's thread.
class LiveDevice::Locked {
  public:
    explicit Locked(const LiveDevice& device) : device_(device) {
        device_.library_.thread_loop_lock(device_.loop_);
    }
    ~Locked() { device_.library_.thread_loop_unlock(device_.loop_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    const LiveDevice& device_;
};

/// What the library calls: all but `OnProcess`, which the audio thread calls, on the loop's thread, with its lock.
struct LiveDevice::Callbacks {
    static void OnDone(void* self, std::uint32_t id, int sequence) {
        if (id == PW_ID_CORE) static_cast<LiveDevice*>(self)->doneSync_ = sequence;
    }
    static void OnError(void* self, std::uint32_t id, int, int result, const char* message) {
        if (id != PW_ID_CORE) return;
        static_cast<LiveDevice*>(self)->loss_ =
            result == -EPIPE ? std::string("PipeWire has gone away") : fmt::format("PipeWire: {}", message);
    }
    static void OnInfo(void* self, const pw_core_info* info) {
        auto* device = static_cast<LiveDevice*>(self);
        const char* rate =
            info->props != nullptr ? ::spa_dict_lookup(info->props, "default.clock.rate") : nullptr;
        int number = 0;
        if (rate != nullptr) std::from_chars(rate, rate + std::strlen(rate), number);
        if (number > 0 && device->streams_[kCapture].stream == nullptr) device->rate_ = number;
    }
    static void OnGlobal(void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                         const spa_dict* properties) {
        auto* device = static_cast<LiveDevice*>(self);
        const char* name =
            properties != nullptr ? ::spa_dict_lookup(properties, PW_KEY_METADATA_NAME) : nullptr;
        if (device->metadata_ != nullptr || name == nullptr || std::string_view(name) != "default" ||
            std::string_view(type) != PW_TYPE_INTERFACE_Metadata)
            return;
        device->metadata_ = static_cast<pw_metadata*>(
            pw_registry_bind(device->registry_, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
        static constexpr pw_metadata_events kEvents = {PW_VERSION_METADATA_EVENTS, OnProperty};
        pw_metadata_add_listener(device->metadata_, &device->metadataListener_, &kEvents, device);
    }
    static int OnProperty(void* self, std::uint32_t subject, const char* key, const char*,
                          const char* value) {
        auto* device = static_cast<LiveDevice*>(self);
        if (subject != PW_ID_CORE || key == nullptr) return 0;
        if (std::string_view(key) == kConfiguredKey) {
            device->isChosen_ = NameIn(value) == kName;
            if (!device->isChosen_) device->configured_ = value != nullptr ? value : "";
        }
        if (std::string_view(key) == kDefaultKey) {
            device->default_ = NameIn(value);
            device->FollowDefault();
        }
        return 0;
    }
    static void OnState(void* self, pw_stream_state, pw_stream_state state, const char* error) {
        auto* stream = static_cast<Stream*>(self);
        if (state == PW_STREAM_STATE_ERROR)
            stream->device->loss_ = fmt::format("the device has failed: {}", error != nullptr ? error : "");
        if (state != PW_STREAM_STATE_PAUSED) return;
        if (stream->side == kCapture)
            stream->device->stale_ = true;
        else
            stream->device->FollowDefault(); // now it has a number
    }
    static void OnParameter(void* self, std::uint32_t id, const spa_pod* parameter) {
        LiveDevice& device = *static_cast<Stream*>(self)->device;
        spa_latency_info latency{};
        if (id != SPA_PARAM_Latency || parameter == nullptr || ::spa_latency_parse(parameter, &latency) < 0)
            return;
        device.TellLatency(device.streams_[latency.direction == SPA_DIRECTION_INPUT ? kCapture : kPlayback],
                           latency);
    }
    static void OnArea(void* self, std::uint32_t id, void* area, std::uint32_t) {
        auto* stream = static_cast<Stream*>(self);
        if (id == SPA_IO_Position && stream->side == kPlayback)
            stream->device->position_ = static_cast<spa_io_position*>(area);
    }
    static void OnProcess(void* self) {
        auto* stream = static_cast<Stream*>(self);
        LiveDevice& device = *stream->device;
        if (stream->side == kPlayback) {
            device.Process();
            return;
        }
        if (device.library_.stream_trigger_process(device.streams_[kPlayback].stream) >= 0) return;
        while (pw_buffer* unheard = device.library_.stream_dequeue_buffer(stream->stream)) // nobody listens
            device.library_.stream_queue_buffer(stream->stream, unheard);
    }
};

LiveDevice::LiveDevice(LiveEffect& effect, bool makeDefault)
    : library_(PipeWireLibrary::Get()), effect_(effect), former_(makeDefault) {
    try {
        Connect();
        TakeUpFormerDefault(makeDefault);
        effect_.Restart(rate_);
        {
            const Locked lock(*this);
            MakeStream(kCapture);
            MakeStream(kPlayback);
        }
        WaitFor([this] { return library_.stream_get_node_id(streams_[kCapture].stream) != PW_ID_ANY; });
        if (!makeDefault) return;
        const Locked lock(*this);
        if (metadata_ == nullptr)
            throw Failure("no session manager runs (WirePlumber), so nothing can be made the default output");
        if (isChosen_ && !former_.Read()) return; // by a run that is at work and will give it back
        madeDefault_ = true;
        former_.Write(configured_);
        SetDefault(fmt::format("{{\"name\":\"{}\"}}", kName).c_str());
    } catch (...) {
        Close();
        throw;
    }
}

LiveDevice::~LiveDevice() { Close(); }

void LiveDevice::Close() {
    if (loop_ == nullptr) return;
    try {
        if (madeDefault_ && loss_.empty()) {
            {
                const Locked lock(*this);
                GiveBackDefault();
            }
            Synchronise();
            former_.Forget();
        }
    } catch (const std::exception&) { // a server that does not answer any more has nothing to give back
    }
    library_.thread_loop_stop(loop_);
    for (const Stream& stream : streams_)
        if (stream.stream != nullptr) library_.stream_destroy(stream.stream);
    if (metadata_ != nullptr) library_.proxy_destroy(reinterpret_cast<pw_proxy*>(metadata_));
    if (registry_ != nullptr) library_.proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
    if (core_ != nullptr) library_.core_disconnect(core_);
    if (context_ != nullptr) library_.context_destroy(context_);
    library_.thread_loop_destroy(loop_);
    loop_ = nullptr;
}

void LiveDevice::Connect() {
    loop_ = library_.thread_loop_new("vocafade", nullptr);
    if (loop_ != nullptr) context_ = library_.context_new(library_.thread_loop_get_loop(loop_), nullptr, 0);
    if (context_ == nullptr)
        throw Failure(fmt::format("PipeWire's library does not start: {}", SystemReason(errno)));
    core_ = library_.context_connect(context_, nullptr, 0);
    if (core_ == nullptr)
        throw Failure(
            fmt::format("PipeWire does not answer ({}): 'vocafade live' needs a desktop whose sound server "
                        "is PipeWire",
                        SystemReason(errno)));
    static const pw_core_events kCoreEvents = [] {
        pw_core_events events{};
        events.version = PW_VERSION_CORE_EVENTS;
        events.info = Callbacks::OnInfo;
        events.done = Callbacks::OnDone;
        events.error = Callbacks::OnError;
        return events;
    }();
    pw_core_add_listener(core_, &coreListener_, &kCoreEvents, this);
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    static const pw_registry_events kRegistryEvents = {PW_VERSION_REGISTRY_EVENTS, Callbacks::OnGlobal,
                                                       nullptr};
    pw_registry_add_listener(registry_, &registryListener_, &kRegistryEvents, this);
    if (library_.thread_loop_start(loop_) < 0) throw Failure("no thread can be started for the sound");
    Synchronise(); // what there is
    Synchronise(); // and what the metadata holds
}

/// Waits, without the lock, until `done` says so with the lock.
void LiveDevice::WaitFor(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + kAnswerTime;
    for (;;) {
        {
            const Locked lock(*this);
            if (!loss_.empty()) throw Failure(loss_);
            if (done()) return;
        }
        if (std::chrono::steady_clock::now() > end) throw Failure("PipeWire does not answer");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

/// Waits until the server has done everything that it was asked for.
void LiveDevice::Synchronise() {
    {
        const Locked lock(*this);
        wantedSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
    }
    WaitFor([this] { return doneSync_ == wantedSync_; });
}

void LiveDevice::MakeStream(Side side) {
    const bool capture = side == kCapture;
    const std::string group = fmt::format("vocafade-{}", ::getpid());
    const std::vector<spa_dict_item> items = {
        {PW_KEY_NODE_NAME, capture ? kName : "vocafade.output"},
        {PW_KEY_NODE_DESCRIPTION, capture ? "Vocafade" : "Vocafade's output"},
        {PW_KEY_MEDIA_NAME, "Vocafade"},
        {PW_KEY_APP_NAME, "Vocafade"},
        {PW_KEY_APP_ICON_NAME, "jp.velmorax.vocafade"},
        {PW_KEY_NODE_GROUP, group.c_str()},
        {PW_KEY_NODE_LINK_GROUP, group.c_str()},
        {PW_KEY_NODE_VIRTUAL, "true"},
        {PW_KEY_MEDIA_TYPE, "Audio"},
        {PW_KEY_MEDIA_CATEGORY, capture ? "Capture" : "Playback"},
        {PW_KEY_MEDIA_ROLE, "DSP"},
        {PW_KEY_MEDIA_CLASS, capture ? "Audio/Sink" : "Stream/Output/Audio"},
        {PW_KEY_NODE_PASSIVE, capture ? "false" : "true"}, // nobody plays: the loudspeakers may sleep
    };
    const spa_dict dictionary{0, static_cast<std::uint32_t>(items.size()), items.data()};
    Stream& stream = streams_[side];
    stream.device = this;
    stream.side = side;
    stream.stream = library_.stream_new(core_, kName, library_.properties_new_dict(&dictionary));
    if (stream.stream == nullptr)
        throw Failure(fmt::format("PipeWire makes no device: {}", SystemReason(errno)));
    static const pw_stream_events kEvents = [] {
        pw_stream_events events{};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.state_changed = Callbacks::OnState;
        events.io_changed = Callbacks::OnArea;
        events.param_changed = Callbacks::OnParameter;
        events.process = Callbacks::OnProcess;
        return events;
    }();
    library_.stream_add_listener(stream.stream, &stream.listener, &kEvents, &stream);
    Pod pod;
    const spa_pod* parameters[] = {BuildFormat(pod, rate_)};
    const unsigned flags = PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS |
                           (capture ? 0U : PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_TRIGGER);
    const int result =
        library_.stream_connect(stream.stream, capture ? PW_DIRECTION_INPUT : PW_DIRECTION_OUTPUT, PW_ID_ANY,
                                static_cast<pw_stream_flags>(flags), parameters, 1);
    if (result < 0) throw Failure(fmt::format("PipeWire makes no device: {}", SystemReason(-result)));
    // What lies behind tells its own as soon as it is connected.
    spa_latency_info latency{};
    latency.direction = capture ? SPA_DIRECTION_INPUT : SPA_DIRECTION_OUTPUT;
    TellLatency(stream, latency);
}

/// Offers both streams' sound at the present rate, so that nothing is converted.
void LiveDevice::OfferRate() {
    for (const Stream& stream : streams_) {
        Pod pod;
        const spa_pod* parameters[] = {BuildFormat(pod, rate_)};
        library_.stream_update_params(stream.stream, parameters, 1);
    }
}

/// Tells those on one side of the device how late the sound is on the other side and here.
void LiveDevice::TellLatency(const Stream& to, spa_latency_info latency) {
    if (to.stream == nullptr) return;
    const auto own = static_cast<std::uint32_t>(effect_.latency());
    latency.min_rate += own;
    latency.max_rate += own;
    latency.min_quantum += 1.0f;
    latency.max_quantum += 1.0f;
    Pod pod;
    const spa_pod* parameters[] = {::spa_latency_build(&pod.builder, SPA_PARAM_Latency, &latency)};
    library_.stream_update_params(to.stream, parameters, 1);
}

/// Takes up what a run that was killed could not give back; gives it back unless this run wants to be the default, too.
void LiveDevice::TakeUpFormerDefault(bool makeDefault) {
    const Locked lock(*this);
    const std::optional<std::string> former = former_.Read();
    if (metadata_ == nullptr || !former) return;
    if (isChosen_) configured_ = NameIn(former->c_str()).empty() ? "" : *former;
    if (makeDefault) return;
    if (isChosen_) GiveBackDefault();
    former_.Forget();
}

void LiveDevice::GiveBackDefault() { SetDefault(configured_.empty() ? nullptr : configured_.c_str()); }

/// Sets the default output that the user has chosen; null: none.
void LiveDevice::SetDefault(const char* value) {
    pw_metadata_set_property(metadata_, PW_ID_CORE, kConfiguredKey,
                             value != nullptr ? "Spa:String:JSON" : nullptr, value);
}

/// Keeps the sound on the device that was the default before this one became it; else lets it go wherever the default
/// goes.
void LiveDevice::FollowDefault() {
    const bool isThis = default_ == kName;
    if (!isThis) speakers_ = default_;
    if (metadata_ == nullptr || streams_[kPlayback].stream == nullptr || speakers_.empty()) return;
    const std::uint32_t id = library_.stream_get_node_id(streams_[kPlayback].stream);
    if (id == PW_ID_ANY) return;
    pw_metadata_set_property(metadata_, id, "target.object", isThis ? "Spa:String" : nullptr,
                             isThis ? speakers_.c_str() : nullptr);
}

std::optional<std::string> LiveDevice::Loss() {
    const Locked lock(*this);
    return loss_.empty() ? std::nullopt : std::optional(loss_);
}

void LiveDevice::Tick() {
    const int graphRate = graphRate_;
    const bool isNew = graphRate > 0 && graphRate != rate_;
    if (!stale_.exchange(false) && !isNew) return;
    while (busy_.exchange(true, std::memory_order_acquire))
        std::this_thread::yield(); // at most as long as a block takes
    if (isNew) rate_ = graphRate;
    effect_.Restart(rate_);
    busy_.store(false, std::memory_order_release);
    if (!isNew) return;
    const Locked lock(*this);
    OfferRate();
}

/// [audio-thread] One block, from one stream to the other. While the effect starts anew, silence.
void LiveDevice::Process() {
    pw_stream* capture = streams_[kCapture].stream;
    pw_stream* playback = streams_[kPlayback].stream;
    if (const spa_io_position* position = position_)
        graphRate_ = static_cast<int>(position->clock.rate.denom);
    pw_buffer* in = nullptr;
    while (pw_buffer* newer = library_.stream_dequeue_buffer(capture)) { // the newest counts
        if (in != nullptr) library_.stream_queue_buffer(capture, in);
        in = newer;
    }
    pw_buffer* out = library_.stream_dequeue_buffer(playback);
    if (in != nullptr && out != nullptr) {
        const spa_data& from = in->buffer->datas[0];
        const spa_data& to = out->buffer->datas[0];
        std::size_t bytes = 0;
        if (from.data != nullptr && to.data != nullptr) {
            const std::size_t offset = std::min(from.chunk->offset, from.maxsize);
            bytes = std::min<std::size_t>({from.chunk->size, from.maxsize - offset, to.maxsize});
            bytes -= bytes % kBytesAFrame;
            std::memcpy(to.data, static_cast<const char*>(from.data) + offset, bytes);
            if (busy_.exchange(true, std::memory_order_acquire)) {
                std::memset(to.data, 0, bytes);
            } else {
                effect_.Process(static_cast<float*>(to.data), bytes / kBytesAFrame);
                busy_.store(false, std::memory_order_release);
            }
        }
        to.chunk->offset = 0;
        to.chunk->stride = kBytesAFrame;
        to.chunk->size = static_cast<std::uint32_t>(bytes);
    }
    if (in != nullptr) library_.stream_queue_buffer(capture, in);
    if (out != nullptr) library_.stream_queue_buffer(playback, out);
}

} // namespace vocafade::command
