// SPDX-License-Identifier: MIT
#include "effect/avocafade.h"
#include "effect/known_hosts.h"
#include "vst/opcodes.h"
#include "vst/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace vocafade {
namespace {

/// Room for any name, unit or value, the greatest float included, with its terminator. The interface names 8
/// bytes, which everything within the parameters' ranges keeps to; hosts give far more.
constexpr std::size_t kShownTextSize = 48;

/// What the engine gets of a level; see docs/compatibility.md. NaN counts as the minimum, as in the display.
float SafeLevel(float normalised) {
    return std::isnan(normalised) ? 0.0f : std::clamp(normalised, 0.0f, 1.0f);
}

} // namespace

std::atomic<float>& AVocafade::CachedInternal(std::int32_t index) {
    switch (index) {
    case kParameterOutput:
        return outputDb_;
    case kParameterInput:
        return inputDb_;
    case kParameterLoFreq:
        return loFreqHz_;
    case kParameterHiFreq:
        return hiFreqHz_;
    default:
        return position_;
    }
}

void AVocafade::SetOnOff(float value) {
    const CSingleLock hold(audioLock_);
    onOff_ = value;
}

void AVocafade::StoreParameter(std::int32_t index, float value) {
    if (index == kParameterOnOff) {
        SetOnOff(value);
    } else {
        normalized_[static_cast<std::size_t>(index)] = value;
    }
    StoreValue(Current(), index, value);
}

void AVocafade::TellEngine(std::int32_t index, float value) {
    // Levels travel normalised, frequencies and the position in their own units; see docs/compatibility.md.
    const std::int32_t internal = TruncateToInt(NormalizeValToInternalVal(index, value));
    switch (index) {
    case kParameterOnOff:
        engine_.set_Activate(TruncateToInt(value) != 0);
        break;
    case kParameterOutput:
        engine_.set_OutputLevel(SafeLevel(value));
        break;
    case kParameterInput:
        engine_.set_InputLevel(SafeLevel(value));
        break;
    case kParameterLoFreq:
        engine_.set_VocafadeLoFS(static_cast<unsigned>(internal));
        break;
    case kParameterHiFreq:
        engine_.set_VocafadeHiFS(static_cast<unsigned>(internal));
        break;
    case kParameterPosition:
        engine_.set_LRate(internal);
        break;
    default:
        break;
    }
}

void AVocafade::ApplyParameter(std::int32_t index, float value) {
    if (index < 0 || index >= kParameterCount) return;
    if (index != kParameterOnOff) CachedInternal(index) = NormalizeValToInternalVal(index, value);
    StoreParameter(index, value);
    TellEngine(index, value);
}

void AVocafade::TellListener(std::int32_t index, float value) {
    if (EffectListener* listener = listener_.load(std::memory_order_acquire)) {
        listener->UpdateControl(index, value);
    }
}

void AVocafade::TellModified() {
    if (EffectListener* listener = listener_.load(std::memory_order_acquire)) listener->UpdateModify();
}

void AVocafade::setParameter(std::int32_t index, float value) {
    TellListener(index, value);
    ApplyParameter(index, value);
}

void AVocafade::setParameterFormUI(std::int32_t index, float value) {
    ApplyParameter(index, value);
    CallHost(audioMasterAutomate, index, 0, nullptr, value);
}

void AVocafade::setParameterFromDiaplay(std::int32_t index, float displayValue) {
    float normalised = displayValue;
    if (index > kParameterOnOff && index < kParameterCount) {
        // The display keeps what was typed, even where the gain behind it is limited.
        CachedInternal(index) = displayValue;
        normalised = NormalizeDisplayValue(index, displayValue);
        StoreParameter(index, normalised);
        TellEngine(index, normalised);
    }
    TellListener(index, normalised);
    CallHost(audioMasterAutomate, index, 0, nullptr, normalised);
    endEdit(index); // without a beginning; see docs/compatibility.md
}

float AVocafade::getParameter(std::int32_t index) {
    if (index == kParameterOnOff) return onOff_;
    if (index < 0 || index >= kParameterCount) return 0.0f;
    return normalized_[static_cast<std::size_t>(index)];
}

void AVocafade::getParameterName(std::int32_t index, char* text) {
    CopyText(text, ParameterRow(index).name, kShownTextSize);
}

void AVocafade::getParameterLabel(std::int32_t index, char* label) {
    CopyText(label, ParameterRow(index).unit, kShownTextSize);
}

void AVocafade::getParameterDisplay(std::int32_t index, char* text) {
    if (index == kParameterOnOff) {
        CopyText(text, onOff_ == 1.0f ? "ON" : "OFF", kShownTextSize);
        return;
    }
    if (index < 0 || index >= kParameterCount) return;
    // Not printf: a host that has set its user's locale would get a decimal comma.
    char shown[kShownTextSize] = {};
    std::to_chars(shown, shown + sizeof shown - 1, static_cast<double>(CachedInternal(index)),
                  std::chars_format::fixed, 1);
    CopyText(text, std::strcmp(shown, "-0.0") == 0 ? "0.0" : shown, kShownTextSize);
}

float AVocafade::getParameterDisplayVal(std::int32_t index) {
    if (index == kParameterOnOff) return onOff_;
    if (index < 0 || index >= kParameterCount) return 0.0f;
    const float internal = CachedInternal(index);
    return internal < 0.0f ? internal - 0.05f : internal + 0.05f;
}

bool AVocafade::getParameterProperties(std::int32_t index, VstParameterProperties* properties) {
    *properties = {};
    if (!hostMisreadsProperties_)
        hostMisreadsProperties_ = MisreadsParameterProperties(getHostProductString());
    if (*hostMisreadsProperties_) return false;
    getParameterLabel(index, properties->label);
    const ParameterRange& row = ParameterRow(index);
    properties->flags = kVstParameterUsesIntegerMinMax | kVstParameterUsesIntStep;
    if (row.taper == Taper::step) properties->flags |= kVstParameterIsSwitch;
    properties->minInteger = static_cast<std::int32_t>(row.minimum);
    properties->maxInteger = static_cast<std::int32_t>(row.maximum);
    properties->stepInteger = 128;
    properties->largeStepInteger = 256;
    properties->displayIndex = static_cast<std::int16_t>(index);
    return true;
}

} // namespace vocafade
