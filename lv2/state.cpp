// SPDX-License-Identifier: MIT
#include "lv2/instance.h"

#include <bit>
#include <cstring>
#include <lv2/atom/atom.h>

namespace vocafade::lv2 {
namespace {

constexpr char kProgramsUri[] = "urn:velmorax:vocafade#programs";

/// The chunk's numbers are in the machine's own byte order: where that is the common one, hosts may write it
/// into a session that another machine reads.
constexpr std::uint32_t kFlags =
    LV2_STATE_IS_POD |
    (std::endian::native == std::endian::little ? std::uint32_t{LV2_STATE_IS_PORTABLE} : 0);

} // namespace

bool Instance::IsShownOurs() const {
    return exchange_.panelThread == std::thread::id() || exchange_.panelThread == std::this_thread::get_id();
}

void Instance::ExchangeHeld() {
    if (exchange_.restored) {
        shown_->setChunk(exchange_.programs.data(), sizeof exchange_.programs, false);
        for (std::int32_t i = 0; i < kParameterCount; ++i)
            Agree(i, agreed_[static_cast<std::size_t>(i)]);
        exchange_.restored = false;
    }
    void* chunk = nullptr;
    shown_->getChunk(&chunk, false);
    std::memcpy(exchange_.programs.data(), chunk, sizeof exchange_.programs);
}

void Instance::ExchangeState() {
    const std::lock_guard hold(exchange_.lock);
    ExchangeHeld();
}

void Instance::SetPortWriter(PortWriter* writer) {
    const std::lock_guard hold(exchange_.lock);
    ExchangeHeld();
    writer_ = writer;
    exchange_.panelThread = writer != nullptr ? std::this_thread::get_id() : std::thread::id();
}

LV2_State_Status Instance::Save(LV2_State_Store_Function store, LV2_State_Handle handle) {
    if (map_ == nullptr) return LV2_STATE_ERR_NO_FEATURE;
    ProgramSet programs;
    {
        const std::lock_guard hold(exchange_.lock);
        if (IsShownOurs()) {
            FollowSound();
            ExchangeHeld();
        }
        std::memcpy(programs.data(), exchange_.programs.data(), sizeof programs);
    }
    return store(handle, map_->map(map_->handle, kProgramsUri), programs.data(), sizeof programs,
                 map_->map(map_->handle, LV2_ATOM__Chunk), kFlags);
}

LV2_State_Status Instance::Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
    if (map_ == nullptr) return LV2_STATE_ERR_NO_FEATURE;
    std::size_t size = 0;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    const void* chunk = retrieve(handle, map_->map(map_->handle, kProgramsUri), &size, &type, &flags);
    if (chunk == nullptr) return LV2_STATE_SUCCESS; // a preset that has ports alone: the programs stay
    if (type != map_->map(map_->handle, LV2_ATOM__Chunk)) return LV2_STATE_ERR_BAD_TYPE;
    if (size != sizeof(ProgramSet)) return LV2_STATE_ERR_UNKNOWN;
    const std::lock_guard hold(exchange_.lock);
    std::memcpy(exchange_.programs.data(), chunk, size);
    exchange_.restored = true;
    if (IsShownOurs()) ExchangeHeld();
    return LV2_STATE_SUCCESS;
}

} // namespace vocafade::lv2
