// SPDX-License-Identifier: MIT
#pragma once

#include "host/effect.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vocafade::command {

/// The unique number of the plug-in that this command comes with.
inline constexpr std::int32_t kVocafadeId = VstId('V', 'f', 'd', 'Q');

/// How far the processed sound lies behind, in samples. The plug-in reports 0 on purpose: 2048 samples of a
/// frame less the 341 of a step.
inline constexpr std::int32_t kVocafadeLatency = 2048 - 341;

/// The plug-in's parameters, by number.
enum VocafadeParameter : std::int32_t {
    kOnOff,
    kOutput,
    kInput,
    kLoFreq,
    kHiFreq,
    kPosition,
    kParameterCount
};

/// What a parameter shows: its range and default in the unit of its display. The levels are in the plug-in's
/// own dB, 6 a doubling.
struct ParameterRange {
    const char* name;
    const char* unit;
    double minimum;
    double maximum;
    double preset;
};

/// The range of a parameter of the plug-in that this command comes with.
const ParameterRange& RangeOf(VocafadeParameter index);

/// The normalised value for `display` in the parameter's own unit, which must be inside its range. What the
/// plug-in cuts to whole numbers (Hz and steps of Position) is never below `display`.
float NormalisedFromDisplay(VocafadeParameter index, double display);

/// One parameter to be set, resolved against an effect.
struct Assignment {
    std::int32_t index = 0;
    float normalised = 0.0F;
    std::optional<double> shown; ///< what the display must read afterwards, within its last digit
};

/// A value for a parameter of the plug-in in its display's unit. Throws `UsageError` outside its range,
/// naming the range; `option` is how the user spelt it.
Assignment AssignDisplay(VocafadeParameter index, double display, const std::string& option);

/// Understands "NAME=VALUE": a name as the effect reports it, case aside; the value in the unit of the
/// display for the plug-in that this command comes with, normalised for any other. Throws `UsageError`.
Assignment ParseAssignment(host::Effect& effect, const std::string& text);

/// The assignments that bring every parameter to its default.
std::vector<Assignment> DefaultAssignments();

/// [main-thread] The number that a parameter shows, or nothing when it shows none.
std::optional<double> ShownNumber(host::Effect& effect, std::int32_t index);

/// [main-thread] Sets the parameters and reads every display back. Throws `Failure` when one does not show
/// what it was told.
void Apply(host::Effect& effect, std::span<const Assignment> assignments);

} // namespace vocafade::command
