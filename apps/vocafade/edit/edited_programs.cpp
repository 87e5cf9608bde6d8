// SPDX-License-Identifier: MIT
#include "apps/vocafade/edit/edited_programs.h"

#include "base/text_encoding.h"

#include <algorithm>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

std::string NumberAndName(host::Effect& effect) {
    return fmt::format("{}: {}", effect.program() + 1,
                       CheckSJISAndToUFT8(effect.programName().c_str()).str());
}

bool SoundsAndIsCalledTheSame(host::Effect& a, host::Effect& b) {
    for (std::int32_t i = 0; i < a.numParameters(); ++i)
        if (a.parameter(i) != b.parameter(i)) return false;
    return a.programName() == b.programName();
}

} // namespace

std::string TitleOf(host::Effect& effect) { return "Vocafade - " + NumberAndName(effect); }

void StepProgram(host::Effect& effect, int by) {
    effect.setProgram(std::clamp(effect.program() + by, 0, effect.numPrograms() - 1));
}

std::string UnsavedPrograms(host::Effect& effect) {
    host::Effect saved(effect.file());
    std::string unsaved;
    for (std::int32_t i = 0; i < effect.numPrograms(); ++i) {
        effect.setProgram(i);
        saved.setProgram(i);
        if (SoundsAndIsCalledTheSame(effect, saved)) continue;
        if (!unsaved.empty()) unsaved += ", ";
        unsaved += NumberAndName(effect);
    }
    return unsaved;
}

} // namespace vocafade::command
