// SPDX-License-Identifier: MIT
#include "lv2/sound.h"

#include "base/float_mode.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vocafade::lv2 {
namespace {

/// Samples that are processed at a time, with room on the stack.
constexpr std::uint32_t kPart = 512;

} // namespace

Sound::Sound(double rate) : effect_(nullptr), bypass_(rate) {
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        values_[static_cast<std::size_t>(i)] = static_cast<float>(ShownRangeOf(i).initial);
    for (std::atomic<float>& port : report_.ports)
        port = std::numeric_limits<float>::quiet_NaN();
    effect_.setSampleRate(static_cast<float>(rate));
}

void Sound::Connect(std::uint32_t port, void* data) {
    if (port < ports_.size()) ports_[port] = static_cast<float*>(data);
}

void Sound::Activate() {
    effect_.startProcess();
    bypass_.Reset();
    sendAll_ = true; // with the first block: before it, a connected port need not be readable yet
}

void Sound::FollowPorts() {
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        const auto place = static_cast<std::size_t>(i);
        const float* port = ports_[PortOf(i)];
        const float value = port != nullptr && !std::isnan(*port) ? *port : values_[place];
        if (value == values_[place] && !sendAll_) continue;
        values_[place] = value;
        report_.ports[place].store(value, std::memory_order_relaxed);
        // The engine runs on while the effect is off, so that it is there at once when it is on again.
        effect_.setParameter(i, i == kParameterOnOff ? 1.0f : NormalisedOf(i, value));
    }
    sendAll_ = false;
}

void Sound::Run(std::uint32_t count) {
    const AudioFloatMode mode; // the blend's arithmetic, too, must not depend on the host's settings
    FollowPorts();
    if (ports_[kPortLatency] != nullptr) *ports_[kPortLatency] = static_cast<float>(kVocafadeLatency);
    float* const* const audio = ports_.data();
    if (std::any_of(audio, audio + kPortFirstParameter, [](const float* port) { return port == nullptr; }))
        count = 0;
    const bool on = NormalisedOf(kParameterOnOff, values_[kParameterOnOff]) != 0.0f;
    std::array<float, 4> peaks{};
    for (std::uint32_t done = 0; done < count; done += kPart) {
        const std::uint32_t part = std::min(kPart, count - done);
        // Copies, since any output may lie where any input does.
        float dry[2][kPart];
        float wet[2][kPart];
        for (std::size_t channel = 0; channel < 2; ++channel)
            std::copy_n(audio[kPortInLeft + channel] + done, part, dry[channel]);
        float* inputs[] = {dry[0], dry[1]};
        float* outputs[] = {wet[0], wet[1]};
        effect_.processReplacing(inputs, outputs, static_cast<std::int32_t>(part));
        std::array<float, 4> now{};
        effect_.GetVU(&now[0], &now[1], &now[2], &now[3]);
        for (std::size_t i = 0; i < peaks.size(); ++i)
            peaks[i] = std::max(peaks[i], now[on ? i : i % 2]); // off, what goes out is what comes in
        bypass_.Process(on, inputs, outputs, part);
        for (std::size_t channel = 0; channel < 2; ++channel)
            std::copy_n(wet[channel], part, audio[kPortOutLeft + channel] + done);
    }
    for (std::size_t i = 0; count > 0 && i < peaks.size(); ++i)
        report_.meters[i].store(peaks[i], std::memory_order_relaxed);
    report_.blocks.fetch_add(1, std::memory_order_release);
}

} // namespace vocafade::lv2
