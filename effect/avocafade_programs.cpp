// SPDX-License-Identifier: MIT
#include "effect/avocafade.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vocafade {

const AVocafadeProgram& AVocafade::Program(std::int32_t index) const {
    return programs_[static_cast<std::size_t>(std::clamp(index, 0, kProgramCount - 1))];
}

CString AVocafade::ProgramName(std::int32_t index) const {
    char text[kProgramNameBytes + 1];
    CopyName(Program(index), text);
    return text;
}

void AVocafade::setProgram(std::int32_t program) {
    if (!IsProgram(program)) return;
    curProgram = program;
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        setParameter(i, LoadValue(Program(program), i)); // the internal values follow each
    }
    TellModified();
}

void AVocafade::setProgramName(char* name) { SetName(Current(), name); }

void AVocafade::getProgramName(char* name) { CopyName(Current(), name); }

bool AVocafade::getProgramNameIndexed(std::int32_t /*category*/, std::int32_t index, char* text) {
    if (index >= kProgramCount) return false;
    CopyName(index < 0 ? Current() : Program(index), text); // hosts ask with -1 for the current one
    return true;
}

std::int32_t AVocafade::getChunk(void** data, bool isPreset) {
    if (isPreset) {
        *data = &Current();
        return sizeof(AVocafadeProgram);
    }
    programs_[0].currentProgram = curProgram;
    *data = programs_.data();
    return sizeof(ProgramSet);
}

std::int32_t AVocafade::setChunk(void* data, std::int32_t byteSize, bool isPreset) {
    if (data == nullptr || byteSize <= 0) return 0;
    const auto bytes = static_cast<std::size_t>(byteSize);
    if (isPreset) {
        AVocafadeProgram program;
        CopyProgram(program, Current());
        std::memcpy(&program, data, std::min(bytes, sizeof program));
        CopyProgram(Current(), program);
        setProgram(curProgram);
    } else {
        ProgramSet programs;
        CopyPrograms(programs, programs_);
        programs[0].currentProgram = curProgram; // what stays when the chunk ends before it
        std::memcpy(programs.data(), data, std::min(bytes, sizeof programs));
        CopyPrograms(programs_, programs);
        const std::int32_t stored = programs_[0].currentProgram;
        setProgram(IsProgram(stored) ? stored : curProgram.load());
    }
    return 0;
}

bool AVocafade::IsProgramChanged() const {
    const AVocafadeProgram& stored = initial_[static_cast<std::size_t>(curProgram.load())];
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        // By their bits, so that NaN equals itself.
        const auto now = std::bit_cast<std::uint32_t>(LoadValue(Current(), i));
        if (now != std::bit_cast<std::uint32_t>(LoadValue(stored, i))) return true;
    }
    return false;
}

void AVocafade::SelectCurrentAgain() {
    setProgram(curProgram);
    updateDisplay();
}

void AVocafade::ProgramToInitial() {
    CopyProgram(Current(), initial_[static_cast<std::size_t>(curProgram.load())]);
    SelectCurrentAgain();
}

void AVocafade::ProgramToAllInitial() {
    CopyPrograms(programs_, initial_);
    SelectCurrentAgain();
}

void AVocafade::ProgramToFactory() {
    CopyProgram(Current(), factory_[static_cast<std::size_t>(curProgram.load())]);
    SelectCurrentAgain();
    TellModified();
}

void AVocafade::CopyPgFrom(std::int32_t source) {
    if (!IsProgram(source)) return;
    CopyProgram(Current(), Program(source));
    SelectCurrentAgain();
}

} // namespace vocafade
