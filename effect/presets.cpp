// SPDX-License-Identifier: MIT
#include "effect/presets.h"

namespace vocafade {
namespace {

/// With this output the song is as loud as when off.
constexpr float kLevelled = 3.9f;

constexpr Preset kPresets[] = {
    //                                            on    output     in    low     high      place
    {"voice_in_the_middle", "Voice in the middle", {1.0f, kLevelled, 0.0f, 400.0f, 9000.0f, 64.0f}},
    {"deep_voice", "A deep voice", {1.0f, kLevelled, 0.0f, 180.0f, 9000.0f, 64.0f}},
    {"high_voice", "A high voice", {1.0f, kLevelled, 0.0f, 600.0f, 10000.0f, 64.0f}},
    {"keep_snare", "Keep the snare", {1.0f, kLevelled, 0.0f, 400.0f, 4500.0f, 64.0f}},
    {"s_and_breath", "S and breath, too", {1.0f, kLevelled, 0.0f, 400.0f, 16000.0f, 64.0f}},
    {"singer_left", "Singer on the left", {1.0f, kLevelled, 0.0f, 400.0f, 9000.0f, 45.0f}},
    {"singer_right", "Singer on the right", {1.0f, kLevelled, 0.0f, 400.0f, 9000.0f, 82.0f}},
    {"whole_middle", "The whole middle", {1.0f, kLevelled, 0.0f, 20.0f, 20000.0f, 64.0f}},
};

} // namespace

std::span<const Preset> Presets() { return kPresets; }

} // namespace vocafade
