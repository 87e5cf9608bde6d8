// SPDX-License-Identifier: MIT
// Any bytes as the chunk that a host hands back, whole bank or one program, and then a host's usual
// questions.
#include "effect/avocafade.h"
#include "fuzz/support.h"
#include "tests/support/recording_host.h"
#include "vst/opcodes.h"

#include <array>
#include <cmath>
#include <cstring>
#include <vector>

using namespace vocafade;

namespace {

void AskEverything(AEffect* effect) {
    std::array<char, 256> text{};
    for (std::int32_t i = 0; i < effect->numParams; ++i) {
        effect->getParameter(effect, i);
        effect->dispatcher(effect, effGetParamDisplay, i, 0, text.data(), 0.0f);
        fuzz::Require(std::strlen(text.data()) < text.size(), "displays end");
    }
    for (std::int32_t i = 0; i < effect->numPrograms; ++i)
        effect->dispatcher(effect, effGetProgramNameIndexed, i, -1, text.data(), 0.0f);
    const VstIntPtr program = effect->dispatcher(effect, effGetProgram, 0, 0, nullptr, 0.0f);
    fuzz::Require(program >= 0 && program < effect->numPrograms, "the current program exists");
}

void Process(AEffect* effect) {
    std::array<float, 1024> in{}, left{}, right{};
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<float>(static_cast<int>(i * 37 % 64) - 32) / 64.0f;
    float* inputs[] = {in.data(), in.data()};
    float* outputs[] = {left.data(), right.data()};
    effect->processReplacing(effect, inputs, outputs, static_cast<std::int32_t>(in.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1); // NOLINT(concurrency-mt-unsafe): one thread
    static AVocafade* const owner = [] {
        auto* made = new AVocafade(test::SilentHost); // for the whole run: its tables take long to build
        made->open();
        return made;
    }();
    AEffect* const effect = owner->getAeffect();
    const bool preset = (data[0] & 1) != 0;
    effect->dispatcher(effect, effSetProgram, 0, data[0] >> 1 & 63, nullptr, 0.0f);
    std::vector<std::uint8_t> chunk(data + 1, data + size); // exactly as long as it says
    effect->dispatcher(effect, effSetChunk, preset, static_cast<VstIntPtr>(chunk.size()), chunk.data(), 0.0f);
    AskEverything(effect);
    Process(effect);
    for (const std::int32_t whole : {0, 1}) {
        void* back = nullptr;
        const VstIntPtr length = effect->dispatcher(effect, effGetChunk, whole, 0, &back, 0.0f);
        fuzz::Require(length == (whole == 0 ? 3328 : 52) && back != nullptr, "chunks keep their size");
        std::vector<std::uint8_t> copy(static_cast<std::uint8_t*>(back),
                                       static_cast<std::uint8_t*>(back) + length);
        effect->dispatcher(effect, effSetChunk, whole, length, copy.data(), 0.0f);
    }
    return 0;
}
