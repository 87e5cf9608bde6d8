// SPDX-License-Identifier: MIT
#include "lv2/instance.h"

#include "plugin/instance.h"
#include "vst/opcodes.h"

#include <cmath>
#include <limits>
#include <mutex>
#include <type_traits>

namespace vocafade::lv2 {
namespace {

/// How long a host may take to bring a value that the editor wrote back through the port.
constexpr std::chrono::milliseconds kEcho{500};

// All instances of this copy of the library, one after the other. Nothing here is destroyed when the process ends:
// a host may give back its last plug-in after that.
constinit std::mutex registerLock;
constinit Instance* newest = nullptr;
static_assert(std::is_trivially_destructible_v<std::mutex>);

} // namespace

Instance::Instance(double rate, const char* bundle, const LV2_URID_Map* map)
    : bundle_(bundle != nullptr ? bundle : ""), sound_(rate), shown_(MakeInstance(FromEffect)), map_(map) {
    agreed_.fill({std::numeric_limits<float>::quiet_NaN(), {}, {}});
    shown_->getAeffect()->user = this;
    shown_->open();
    const std::lock_guard hold(registerLock);
    older_ = newest;
    newest = this;
}

Instance::~Instance() {
    const std::lock_guard hold(registerLock);
    Instance** place = &newest;
    while (*place != this)
        place = &(*place)->older_;
    *place = older_;
}

Instance* Instance::Find(void* handle) {
    const std::lock_guard hold(registerLock);
    Instance* found = newest;
    while (found != nullptr && found != handle)
        found = found->older_;
    return found;
}

VstIntPtr Instance::FromEffect(AEffect* effect, std::int32_t opcode, std::int32_t index, VstIntPtr, void*,
                               float) {
    if (opcode == audioMasterVersion) return 2400;
    auto* instance = effect != nullptr ? static_cast<Instance*>(effect->user) : nullptr;
    if (instance == nullptr) return 0;
    if (opcode == audioMasterGetDirectory) return reinterpret_cast<VstIntPtr>(instance->bundle_.c_str());
    if (instance->writer_ == nullptr) return 0;
    if (opcode == audioMasterAutomate) instance->Write(index);
    if (opcode == audioMasterEndEdit) instance->writer_->TouchPort(index, false);
    if (opcode == audioMasterUpdateDisplay) instance->WriteWhatDiffers();
    return 0;
}

void Instance::Write(std::int32_t parameter) {
    if (parameter < 0 || parameter >= kParameterCount) return;
    Agreement& agreement = agreed_[static_cast<std::size_t>(parameter)];
    agreement.port = PortValueOf(parameter, shown_->getParameter(parameter));
    agreement.writtenUntil = Clock::now() + kEcho;
    if (writer_ != nullptr) writer_->TouchPort(parameter, true); // over which the host may close the editor
    if (writer_ != nullptr) writer_->WritePort(parameter, agreement.port);
}

void Instance::WriteWhatDiffers() {
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        if (Says(i, agreed_[static_cast<std::size_t>(i)].port, shown_->getParameter(i))) continue;
        Write(i);
        if (writer_ == nullptr) return;
        writer_->TouchPort(i, false);
    }
}

void Instance::FollowSound() {
    const SoundReport& report = sound_.report();
    const std::uint32_t blocks = report.blocks.load(std::memory_order_acquire);
    if (blocks == blocksSeen_) return; // nothing runs: what the ports said then may be old
    blocksSeen_ = blocks;
    std::array<float, 4> meters;
    for (std::size_t i = 0; i < meters.size(); ++i)
        meters[i] = report.meters[i].load(std::memory_order_relaxed);
    shown_->ShowVU(meters[0], meters[1], meters[2], meters[3]);
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        FollowSound(i, report.ports[static_cast<std::size_t>(i)].load(std::memory_order_relaxed));
}

void Instance::FollowSound(std::int32_t parameter, float port) {
    Agreement& agreement = agreed_[static_cast<std::size_t>(parameter)];
    if (port == agreement.port) {
        agreement = {port, {}, {}}; // all know the same
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now >= agreement.writtenUntil && now >= agreement.toldUntil) Agree(parameter, {port, {}, {}});
}

void Instance::FollowPort(std::int32_t parameter, float value) {
    if (parameter < 0 || parameter >= kParameterCount) return;
    const Agreement& agreement = agreed_[static_cast<std::size_t>(parameter)];
    const Clock::time_point now = Clock::now();
    if (value != agreement.port && now >= agreement.writtenUntil) Agree(parameter, {value, {}, now + kEcho});
}

void Instance::Agree(std::int32_t parameter, const Agreement& agreement) {
    if (std::isnan(agreement.port)) return;
    agreed_[static_cast<std::size_t>(parameter)] = agreement;
    shown_->setParameter(parameter, NormalisedOf(parameter, agreement.port));
}

} // namespace vocafade::lv2
