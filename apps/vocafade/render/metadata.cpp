// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/metadata.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vocafade::command {
namespace {

constexpr std::uint32_t kMostCues = 100000;
constexpr std::size_t kLongText = 16000; // bytes of coding history or tag text: libsndfile ends at 16384
using BroadcastInfo = SF_BROADCAST_INFO_VAR(kLongText);
using CartInfo = SF_CART_INFO_VAR(kLongText);

void CopyStrings(SNDFILE* from, SNDFILE* to) {
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
        if (const char* text = sf_get_string(from, kind); text != nullptr && *text != '\0')
            sf_set_string(to, kind, text);
}

/// Copies a record of one fixed layout by its pair of commands.
template <typename Record>
void CopyRecord(SNDFILE* from, int get, SNDFILE* to, int set) {
    const auto record = std::make_unique<Record>();
    if (sf_command(from, get, record.get(), sizeof(Record)) == SF_TRUE)
        sf_command(to, set, record.get(), sizeof(Record));
}

/// The same for a record that ends in a text, whose length and letters are `size` and what follows it.
template <typename Record>
void CopyTextRecord(SNDFILE* from, int get, SNDFILE* to, int set, std::uint32_t Record::*size) {
    const auto record = std::make_unique<Record>();
    if (sf_command(from, get, record.get(), sizeof(Record)) != SF_TRUE) return;
    (*record).*size = std::min<std::uint32_t>((*record).*size, kLongText);
    sf_command(to, set, record.get(), sizeof(Record));
}

void CopyCues(SNDFILE* from, SNDFILE* to) {
    std::uint32_t count = 0;
    if (sf_command(from, SFC_GET_CUE_COUNT, &count, sizeof count) != SF_TRUE) return;
    if (count == 0 || count > kMostCues) return;
    const std::size_t bytes = offsetof(SF_CUES, cue_points) + count * sizeof(SF_CUE_POINT);
    std::vector<std::uint32_t> cues((bytes + 3) / 4);
    if (sf_command(from, SFC_GET_CUE, cues.data(), static_cast<int>(bytes)) == SF_TRUE)
        sf_command(to, SFC_SET_CUE, cues.data(), static_cast<int>(bytes));
}

void CopyChannelMap(SNDFILE* from, SNDFILE* to, int channels) {
    std::vector<int> map(static_cast<std::size_t>(channels));
    const int bytes = static_cast<int>(map.size() * sizeof(int));
    if (sf_command(from, SFC_GET_CHANNEL_MAP_INFO, map.data(), bytes) == SF_TRUE)
        sf_command(to, SFC_SET_CHANNEL_MAP_INFO, map.data(), bytes);
}

} // namespace

void CopyMetadata(SNDFILE* from, const SF_INFO& fromInfo, SNDFILE* to, bool withTexts) {
    if (withTexts) CopyStrings(from, to);
    CopyTextRecord(from, SFC_GET_BROADCAST_INFO, to, SFC_SET_BROADCAST_INFO,
                   &BroadcastInfo::coding_history_size);
    CopyTextRecord(from, SFC_GET_CART_INFO, to, SFC_SET_CART_INFO, &CartInfo::tag_text_size);
    CopyRecord<SF_INSTRUMENT>(from, SFC_GET_INSTRUMENT, to, SFC_SET_INSTRUMENT);
    CopyCues(from, to);
    CopyChannelMap(from, to, fromInfo.channels);
}

} // namespace vocafade::command
