// SPDX-License-Identifier: MIT
#pragma once

#include "effect/identity.h"
#include "effect/parameters.h"
#include "host/effect.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vocafade::command {

/// A limit of a range without the digits that nobody types, never outside it: "-59.79", "20000".
std::string LimitText(double limit);

/// What a parameter of the plug-in that this command comes with goes through: "-59.79 to 6 dB".
std::string RangeWords(std::int32_t index);

/// One parameter to be set, resolved against an effect.
struct Assignment {
    std::int32_t index = 0;
    float normalised = 0.0f;
    std::optional<double> shown; ///< what the display must read afterwards, within its last digit
};

/// A value for a parameter of the plug-in in its display's unit. Throws `UsageError` outside its range,
/// naming the range; `option` is how the user spelt it.
Assignment AssignDisplay(std::int32_t index, double display, const std::string& option);

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
