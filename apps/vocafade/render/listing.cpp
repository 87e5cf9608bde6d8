// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/listing.h"

#include "apps/vocafade/shared/parameters.h"
#include "apps/vocafade/shared/text.h"
#include "base/text_encoding.h"

#include <fmt/format.h>

namespace vocafade::command {
namespace {

/// Our plug-in keeps its names in Shift-JIS; of others nothing is known.
std::string ShownName(const host::Effect& effect, const std::string& name) {
    return Printable(effect.uniqueId() == kVocafadeId ? CheckSJISAndToUFT8(name.c_str()).str() : name);
}

std::string ProgramName(host::Effect& effect, std::int32_t index) {
    if (const std::optional<std::string> name = effect.programNameAt(index)) return ShownName(effect, *name);
    effect.setProgram(index);
    return ShownName(effect, effect.programName());
}

std::string OurLine(host::Effect& effect, std::int32_t index) {
    const bool onOff = index == kParameterOnOff;
    return fmt::format("{:<10}{:<18}{:<10}{:<10}\n", ParameterRow(index).name,
                       onOff ? "OFF, ON" : RangeWords(index),
                       onOff ? "ON" : LimitText(ShownRangeOf(index).initial), effect.parameterDisplay(index));
}

} // namespace

std::string ProgramListing(host::Effect& effect) {
    std::string text;
    const std::int32_t current = effect.program();
    for (std::int32_t i = 0; i < effect.numPrograms(); ++i)
        text += fmt::format("{:>3}  {}\n", i + 1, ProgramName(effect, i));
    if (effect.program() != current) effect.setProgram(current);
    return text;
}

std::string ParameterListing(host::Effect& effect) {
    const bool ours = effect.uniqueId() == kVocafadeId;
    std::string text = ours ? fmt::format("{:<10}{:<18}{:<10}{:<10}\n", "NAME", "RANGE", "DEFAULT", "NOW")
                            : fmt::format("{:<24}{:<10}{}\n", "NAME", "0 TO 1", "NOW");
    for (std::int32_t i = 0; i < effect.numParameters(); ++i) {
        if (ours && i < kParameterCount) {
            text += OurLine(effect, i);
            continue;
        }
        text += fmt::format("{:<24}{:<10.4f}{} {}\n", Printable(effect.parameterName(i)), effect.parameter(i),
                            Printable(effect.parameterDisplay(i)), Printable(effect.parameterLabel(i)));
    }
    return text;
}

} // namespace vocafade::command
