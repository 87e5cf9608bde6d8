// SPDX-License-Identifier: MIT
#include "host/host_context.h"

#include "vst/opcodes.h"

#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

namespace vocafade::host {
namespace {

constexpr VstIntPtr kVstVersion = 2400;
constexpr VstIntPtr kHostVersion = 1000;
constexpr VstIntPtr kLanguageEnglish = 1;
constexpr VstIntPtr kAutomationOff = 1;
constexpr VstIntPtr kProcessLevelUser = 1;
constexpr VstIntPtr kProcessLevelOffline = 4; // everything here renders; nothing waits for a sound card
constexpr double kTempo = 120.0;              // beats a minute

thread_local HostContext* constructing = nullptr;
thread_local bool processing = false;

VstIntPtr PutText(void* buffer, std::string_view text) {
    if (buffer == nullptr) return 0;
    char* bytes = static_cast<char*>(buffer); // at least 64 bytes by the interface
    std::memcpy(bytes, text.data(), text.size());
    bytes[text.size()] = '\0';
    return 1;
}

VstIntPtr CanDo(const void* text) {
    if (text == nullptr) return 0;
    constexpr std::array<std::string_view, 5> kYes = {"sendVstTimeInfo", "sizeWindow", "startStopProcess",
                                                      "offline", "supplyIdle"};
    const std::string_view asked = static_cast<const char*>(text);
    for (const std::string_view yes : kYes)
        if (asked == yes) return 1;
    return 0;
}

/// The answers that need no context, for calls without a known effect.
VstIntPtr AnswerWithoutContext(std::int32_t opcode, void* ptr) {
    switch (opcode) {
    case audioMasterVersion:
        return kVstVersion;
    case audioMasterGetVendorString:
        return PutText(ptr, "Vocafade");
    case audioMasterGetProductString:
        return PutText(ptr, "Vocafade host");
    case audioMasterGetVendorVersion:
        return kHostVersion;
    case audioMasterGetLanguage:
        return kLanguageEnglish;
    case audioMasterCanDo:
        return CanDo(ptr);
    case audioMasterGetAutomationState:
        return kAutomationOff;
    case audioMasterGetCurrentProcessLevel:
        return processing ? kProcessLevelOffline : kProcessLevelUser;
    case audioMasterWillReplaceOrAccumulate:
        return 1;
    default:
        return 0;
    }
}

} // namespace

HostContext::HostContext(std::string directory, double sampleRate, std::int32_t blockSize,
                         HostListener* listener)
    : directory_(std::move(directory)), sampleRate_(sampleRate), blockSize_(blockSize), listener_(listener) {}

HostContext::Constructing::Constructing(HostContext& context)
    : previous_(std::exchange(constructing, &context)) {}
HostContext::Constructing::~Constructing() { constructing = previous_; }

HostContext::Processing::Processing() : previous_(std::exchange(processing, true)) {}
HostContext::Processing::~Processing() { processing = previous_; }

void HostContext::Attach(AEffect* effect) { effect->resvd1 = reinterpret_cast<VstIntPtr>(this); }

void HostContext::setPlaying(bool playing) {
    if (playing) position_ = 0;
    playing_ = playing;
    transportChanged_ = true;
}

VstIntPtr HostContext::Callback(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr value,
                                void* ptr, float opt) {
    // While a thread constructs, what the new descriptor holds is not ours yet, so it is not looked at.
    HostContext* context = constructing;
    if (context == nullptr && effect != nullptr)
        // The field is the host's own, and a number is its only form.
        context = reinterpret_cast<HostContext*>(effect->resvd1);
    if (context == nullptr) return AnswerWithoutContext(opcode, ptr);
    return context->Answer(opcode, index, value, ptr, opt);
}

VstIntPtr HostContext::Answer(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                              float opt) {
    switch (opcode) {
    case audioMasterAutomate:
        if (listener_ != nullptr) listener_->ParameterAutomated(index, opt);
        return 0;
    case audioMasterBeginEdit:
        if (listener_ != nullptr) listener_->EditBegun(index);
        return 1;
    case audioMasterEndEdit:
        if (listener_ != nullptr) listener_->EditEnded(index);
        return 1;
    case audioMasterUpdateDisplay:
        if (listener_ != nullptr) listener_->DisplayChanged();
        return 1;
    case audioMasterSizeWindow:
        return listener_ != nullptr && listener_->ResizeEditor(index, static_cast<std::int32_t>(value)) ? 1
                                                                                                        : 0;
    case audioMasterIdle:
        if (listener_ != nullptr) listener_->Idle();
        return 0;
    case audioMasterGetTime:
        return reinterpret_cast<VstIntPtr>(TimeInfo());
    case audioMasterGetSampleRate:
        return static_cast<VstIntPtr>(std::lround(sampleRate_));
    case audioMasterGetBlockSize:
        return blockSize_;
    case audioMasterGetDirectory:
        return reinterpret_cast<VstIntPtr>(directory_.c_str());
    default:
        return AnswerWithoutContext(opcode, ptr);
    }
}

VstTimeInfo* HostContext::TimeInfo() {
    // One record a thread: the caller reads it at once, and two threads of an effect may ask together.
    thread_local VstTimeInfo info;
    info = {};
    info.samplePos = static_cast<double>(position_.load());
    info.sampleRate = sampleRate_;
    info.tempo = kTempo;
    info.ppqPos = info.samplePos / info.sampleRate * kTempo / 60.0;
    info.timeSigNumerator = 4;
    info.timeSigDenominator = 4;
    info.barStartPos = std::floor(info.ppqPos / 4.0) * 4.0;
    info.flags = kVstPpqPosValid | kVstTempoValid | kVstBarsValid | kVstTimeSigValid;
    if (playing_) info.flags |= kVstTransportPlaying;
    if (transportChanged_.exchange(false)) info.flags |= kVstTransportChanged;
    return &info;
}

} // namespace vocafade::host
