// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/live_effect.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "base/float_mode.h"

#include <algorithm>
#include <cmath>

namespace vocafade::command {

LiveEffect::LiveEffect(const std::filesystem::path& plugin, const SoundOptions& options)
    : shown_(plugin), sounding_(plugin), settings_(ResolveSound(shown_, options)),
      latency_(LatencyOf(sounding_)), switches_(sounding_.uniqueId() == kVocafadeId) {
    if (sounding_.numInputs() != 2 || sounding_.numOutputs() != 2) throw Failure("the plug-in is not stereo");
    sent_.resize(static_cast<std::size_t>(sounding_.numParameters()));
}

void LiveEffect::Restart(double rate) {
    std::vector<float> values(sent_.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = shown_.parameter(static_cast<std::int32_t>(i));
    for (host::Effect* effect : {&shown_, &sounding_}) {
        effect->Configure(rate, kPart);
        effect->Start();
        if (!started_) SetUp(*effect, settings_);
    }
    for (std::size_t i = 0; started_ && i < values.size(); ++i)
        shown_.setParameter(static_cast<std::int32_t>(i), values[i]);
    started_ = true;
    sendAll_ = true;
    if (switches_) bypass_.emplace(rate);
}

void LiveEffect::SendChanges() {
    for (std::size_t i = 0; i < sent_.size(); ++i) {
        const auto index = static_cast<std::int32_t>(i);
        const float value = shown_.parameter(index);
        if (value == sent_[i] && !sendAll_) continue;
        sent_[i] = value;
        // The engine runs on while the effect is off, so that it is there at once when it is on again.
        sounding_.setParameter(index, switches_ && index == kParameterOnOff ? 1.0f : value);
    }
    sendAll_ = false;
}

void LiveEffect::Process(float* samples, std::size_t frames) {
    const AudioFloatMode mode;
    std::array<float, 2> peaks{};
    float* dry[] = {dry_[0].data(), dry_[1].data()};
    float* wet[] = {wet_[0].data(), wet_[1].data()};
    float* unheard[] = {unheard_[0].data(), unheard_[1].data()};
    for (std::size_t done = 0; done < frames; done += kPart) {
        const std::size_t count = std::min(kPart, frames - done);
        const auto part = static_cast<std::int32_t>(count);
        float* frame = samples + 2 * done;
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t c = 0; c < 2; ++c)
                dry_[c][i] = frame[2 * i + c];
        SendChanges();
        sounding_.Process(dry, wet, part);
        if (watched_) shown_.Process(dry, unheard, part);
        if (bypass_) bypass_->Process(isOn(), dry, wet, static_cast<std::uint32_t>(count));
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t c = 0; c < 2; ++c) {
                frame[2 * i + c] = wet_[c][i];
                peaks[c] = std::max(peaks[c], std::abs(wet_[c][i]));
            }
    }
    // Only this thread raises them; when the other takes them meanwhile, they are low once more.
    for (std::size_t c = 0; c < 2; ++c)
        if (peaks[c] > peaks_[c].load(std::memory_order_relaxed))
            peaks_[c].store(peaks[c], std::memory_order_relaxed);
}

void LiveEffect::Switch(bool on) {
    if (switches_) shown_.setParameter(kParameterOnOff, on ? 1.0f : 0.0f);
}

std::array<float, 2> LiveEffect::TakePeaks() {
    return {peaks_[0].exchange(0.0f, std::memory_order_relaxed),
            peaks_[1].exchange(0.0f, std::memory_order_relaxed)};
}

std::unique_ptr<EditorWindow> OpenWindow(LiveEffect& effect) {
    if (!EditorWindow::HasDisplay()) return nullptr;
    try {
        auto window = std::make_unique<EditorWindow>(effect.shown(), "Vocafade", EditorWindow::Kind::managed);
        effect.setWatched(true);
        return window;
    } catch (const Failure& error) {
        PrintError(std::string("vocafade: there will be no window: ") + error.what() + "\n");
        return nullptr;
    }
}

} // namespace vocafade::command
