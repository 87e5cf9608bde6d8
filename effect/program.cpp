// SPDX-License-Identifier: MIT
#include "effect/program.h"

#include <atomic>
#include <cstring>

namespace vocafade {

AVocafadeProgram::AVocafadeProgram() : values{}, name{}, currentProgram(0) {
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        values[static_cast<std::size_t>(i)] = DefaultNormalizedValue(i);
    }
    SetName(*this, "Empty");
}

float LoadValue(const AVocafadeProgram& program, std::int32_t index) {
    // atomic_ref wants a non-const object even to read it.
    auto& value = const_cast<float&>(program.values[static_cast<std::size_t>(index)]);
    return std::atomic_ref<float>(value).load(std::memory_order_relaxed);
}

void StoreValue(AVocafadeProgram& program, std::int32_t index, float value) {
    std::atomic_ref<float>(program.values[static_cast<std::size_t>(index)])
        .store(value, std::memory_order_relaxed);
}

void CopyProgram(AVocafadeProgram& to, const AVocafadeProgram& from) {
    if (&to == &from) return;
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        StoreValue(to, i, LoadValue(from, i));
    }
    std::memcpy(to.name, from.name, sizeof to.name);
    to.currentProgram = from.currentProgram;
}

void CopyPrograms(ProgramSet& to, const ProgramSet& from) {
    for (std::size_t i = 0; i < to.size(); ++i) {
        CopyProgram(to[i], from[i]);
    }
}

void SetName(AVocafadeProgram& program, const char* name) {
    if (name == nullptr) return;
    char text[sizeof program.name] = {};
    std::memcpy(text, name, ::strnlen(name, kProgramNameBytes));
    std::memcpy(program.name, text, sizeof text);
}

void CopyName(const AVocafadeProgram& program, char* text) {
    std::memcpy(text, program.name, kProgramNameBytes);
    text[kProgramNameBytes] = 0;
}

} // namespace vocafade
