// SPDX-License-Identifier: MIT
#include "apps/validate/raw_effect.h"

#include "apps/validate/guarded_memory.h"
#include "apps/validate/report.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fmt/format.h>
#include <utility>

namespace vocafade::validate {
namespace {

constexpr double kFirstRate = 44100.0;
constexpr std::int32_t kFirstBlock = 512;
constexpr std::int32_t kMostChannels = 256;
constexpr std::int32_t kMostPrograms = 65536;
constexpr VstIntPtr kMostStateBytes = VstIntPtr{64} << 20;

const char* WhatIsWrong(const AEffect* effect) {
    if (effect == nullptr) return "the entry point answers null";
    if (effect->magic != kEffectMagic) return "the descriptor does not begin with VstP";
    if (effect->dispatcher == nullptr) return "the descriptor has no dispatcher";
    const auto sane = [](std::int32_t count, std::int32_t most) { return count >= 0 && count <= most; };
    if (!sane(effect->numInputs, kMostChannels) || !sane(effect->numOutputs, kMostChannels))
        return "the number of channels is negative or above 256";
    if (!sane(effect->numParams, kMostPrograms) || !sane(effect->numPrograms, kMostPrograms))
        return "the number of parameters or programs is negative or above 65536";
    if (effect->numParams > 0 && (effect->getParameter == nullptr || effect->setParameter == nullptr))
        return "there are parameters but no entries to get and set them";
    if (effect->processReplacing == nullptr) return "there is no processReplacing";
    return nullptr;
}

} // namespace

RawEffect::RawEffect(const host::SharedObject& object)
    : context_(std::make_unique<host::HostContext>(object.folder(), kFirstRate, kFirstBlock, nullptr)) {
    const host::HostContext::Constructing scope(*context_);
    AEffect* effect = object.entry()(&host::HostContext::Callback);
    if (const char* wrong = WhatIsWrong(effect)) throw Hopeless(wrong);
    effect_ = effect;
    context_->Attach(effect_);
}

RawEffect::~RawEffect() { Close(); }

VstIntPtr RawEffect::Ask(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr, float opt) {
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

std::string RawEffect::Text(std::int32_t opcode, std::int32_t index) {
    std::array<char, 1024> text{};
    Ask(opcode, index, 0, text.data());
    return {text.data(), ::strnlen(text.data(), text.size() - 1)};
}

std::vector<std::int32_t> RawEffect::Settable() {
    std::vector<std::int32_t> parameters;
    for (std::int32_t i = 0; i < effect_->numParams; ++i)
        if (Ask(effCanBeAutomated, i) != 0) parameters.push_back(i);
    return parameters;
}

std::vector<char> RawEffect::SaveState(bool programOnly) {
    void* data = nullptr;
    const VstIntPtr size = Ask(effGetChunk, programOnly ? 1 : 0, 0, static_cast<void*>(&data));
    if (size < 0 || size > kMostStateBytes)
        throw Hopeless(fmt::format("it says that its state has {} bytes", size));
    if (size > 0 && data == nullptr)
        throw Hopeless(fmt::format("it says that its state has {} bytes, at address null", size));
    const auto* bytes = static_cast<const char*>(data);
    return {bytes, bytes + size};
}

void RawEffect::RestoreState(const std::vector<char>& state, bool programOnly) {
    const GuardedMemory memory(state.size(), GuardedMemory::Against::end, "the saved state");
    std::copy(state.begin(), state.end(), memory.as<char>());
    Ask(effSetChunk, programOnly ? 1 : 0, static_cast<VstIntPtr>(state.size()), memory.data());
}

void RawEffect::Close() {
    if (AEffect* effect = std::exchange(effect_, nullptr))
        effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
}

void RawEffect::Configure(double rate, std::int32_t block) {
    context_->setSampleRate(rate);
    context_->setBlockSize(block);
    Ask(effSetSampleRate, 0, 0, nullptr, static_cast<float>(rate));
    Ask(effSetBlockSize, 0, block);
}

void RawEffect::On() {
    context_->setPlaying(true);
    Ask(effMainsChanged, 0, 1);
    Ask(effStartProcess);
}

void RawEffect::Off() {
    Ask(effStopProcess);
    Ask(effMainsChanged, 0, 0);
    context_->setPlaying(false);
}

void RawEffect::Start(double rate, std::int32_t block) {
    Open();
    Configure(rate, block);
    On();
}

void RawEffect::Process(float** inputs, float** outputs, std::int32_t frames) {
    const host::HostContext::Processing scope;
    effect_->processReplacing(effect_, inputs, outputs, frames);
    context_->Advance(frames);
}

void RawEffect::Process(double** inputs, double** outputs, std::int32_t frames) {
    const host::HostContext::Processing scope;
    effect_->processDoubleReplacing(effect_, inputs, outputs, frames);
    context_->Advance(frames);
}

} // namespace vocafade::validate
