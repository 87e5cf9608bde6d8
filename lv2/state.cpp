// SPDX-License-Identifier: MIT
#include "lv2/instance.h"

#include <bit>
#include <cstring>
#include <lv2/atom/atom.h>
#include <vector>

namespace vocafade::lv2 {
namespace {

constexpr char kProgramsUri[] = "urn:velmorax:vocafade#programs";

/// The chunk's numbers are in the machine's own byte order: where that is the common one, hosts may write it
/// into a session that another machine reads.
constexpr std::uint32_t kFlags =
    LV2_STATE_IS_POD |
    (std::endian::native == std::endian::little ? std::uint32_t{LV2_STATE_IS_PORTABLE} : 0);

} // namespace

LV2_State_Status Instance::Save(LV2_State_Store_Function store, LV2_State_Handle handle) {
    if (map_ == nullptr) return LV2_STATE_ERR_NO_FEATURE;
    FollowSound();
    void* chunk = nullptr;
    const std::int32_t size = shown_->getChunk(&chunk, false);
    return store(handle, map_->map(map_->handle, kProgramsUri), chunk, static_cast<std::size_t>(size),
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
    std::vector<char> bytes(size);
    std::memcpy(bytes.data(), chunk, size);
    shown_->setChunk(bytes.data(), static_cast<std::int32_t>(size), false);
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        Agree(i, agreed_[static_cast<std::size_t>(i)]);
    }
    return LV2_STATE_SUCCESS;
}

} // namespace vocafade::lv2
