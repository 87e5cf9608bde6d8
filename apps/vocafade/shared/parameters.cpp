// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/parameters.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr double kDisplayDigit = 0.1; // displays have one decimal place

/// "Output goes from -59.79 to 6 dB".
std::string RangeText(std::int32_t index) {
    return fmt::format("{} goes from {}", ParameterRow(index).name, RangeWords(index));
}

std::optional<double> ParseNumber(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// "on", "off", "1", "0" and their like.
std::optional<double> ParseSwitch(std::string_view text) {
    const std::string word = LowerCase(text);
    if (word == "on" || word == "1" || word == "1.0" || word == "yes" || word == "true") return 1.0;
    if (word == "off" || word == "0" || word == "0.0" || word == "no" || word == "false") return 0.0;
    return std::nullopt;
}

/// The number in front of the parameter's own unit ("400", "400Hz", "-3 dB").
std::optional<double> ParseDisplay(std::int32_t index, const std::string& text) {
    if (index == kParameterOnOff) return ParseSwitch(text);
    std::string number = LowerCase(text);
    const std::string unit = LowerCase(ParameterRow(index).unit);
    if (!unit.empty() && number.ends_with(unit)) number.resize(number.size() - unit.size());
    while (number.ends_with(' '))
        number.pop_back();
    return ParseNumber(number);
}

std::int32_t FindParameter(host::Effect& effect, const std::string& name) {
    std::vector<std::string> known;
    for (std::int32_t i = 0; i < effect.numParameters(); ++i) {
        known.push_back(effect.parameterName(i));
        if (LowerCase(known.back()) == LowerCase(name)) return i;
    }
    std::string list;
    for (std::size_t i = 0; i < known.size() && i < 32; ++i)
        list += (i == 0 ? "" : ", ") + known[i];
    const std::string near = DidYouMean(name, known);
    throw UsageError(fmt::format("there is no parameter '{}'.{}", Printable(name),
                                 near.empty() ? " There are: " + list : near));
}

} // namespace

std::string LimitText(double limit) { return fmt::format("{:g}", std::trunc(limit * 100.0) / 100.0); }

std::string RangeWords(std::int32_t index) {
    const ShownRange range = ShownRangeOf(index);
    const std::string_view unit = ParameterRow(index).unit;
    return fmt::format("{} to {}{}{}", LimitText(range.minimum), LimitText(range.maximum),
                       unit.empty() ? "" : " ", unit);
}

Assignment AssignDisplay(std::int32_t index, double display, const std::string& option) {
    const ShownRange range = ShownRangeOf(index);
    // What a display shows may be typed back, so its rounding at the ends of the range is let in.
    const double slack = ParameterRow(index).taper == Taper::gain ? kDisplayDigit / 2.0 : 0.0;
    if (!(display >= range.minimum - slack && display <= range.maximum + slack))
        throw UsageError(fmt::format("{} is out of range: {}", option, RangeText(index)));
    const double inside = std::clamp(display, range.minimum, range.maximum);
    Assignment assignment{index, NormalizeWholeDisplayValue(index, static_cast<float>(inside)), std::nullopt};
    if (index != kParameterOnOff) assignment.shown = inside;
    return assignment;
}

Assignment ParseAssignment(host::Effect& effect, const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError(fmt::format("--set wants NAME=VALUE, not '{}'", Printable(text)));
    const std::int32_t index = FindParameter(effect, text.substr(0, equals));
    const std::string value = text.substr(equals + 1);
    const std::string option = "--set " + Printable(text);
    if (effect.uniqueId() == kVocafadeId && index < kParameterCount) {
        const std::optional<double> display = ParseDisplay(index, value);
        if (!display && index == kParameterOnOff) throw UsageError(option + ": ON/OFF is ON or OFF");
        if (!display) throw UsageError(fmt::format("{} is not a number: {}", option, RangeText(index)));
        return AssignDisplay(index, *display, option);
    }
    const std::optional<double> normalised = ParseNumber(value);
    if (!normalised || !(*normalised >= 0.0 && *normalised <= 1.0))
        throw UsageError(option + ": the parameters of this plug-in are set from 0 to 1");
    return {index, static_cast<float>(*normalised), std::nullopt};
}

std::vector<Assignment> DefaultAssignments() {
    std::vector<Assignment> assignments;
    assignments.reserve(kParameterCount);
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        assignments.push_back(AssignDisplay(i, ShownRangeOf(i).initial, ParameterRow(i).name));
    return assignments;
}

std::optional<double> ShownNumber(host::Effect& effect, std::int32_t index) {
    return ParseNumber(effect.parameterDisplay(index));
}

void Apply(host::Effect& effect, std::span<const Assignment> assignments) {
    for (const Assignment& assignment : assignments)
        effect.setParameter(assignment.index, assignment.normalised);
    for (const Assignment& assignment : assignments) {
        const bool overridden =
            std::any_of(&assignment + 1, assignments.data() + assignments.size(),
                        [&](const Assignment& later) { return later.index == assignment.index; });
        if (!assignment.shown || overridden) continue;
        const std::optional<double> number = ShownNumber(effect, assignment.index);
        if (!number || std::abs(*number - *assignment.shown) > kDisplayDigit * 0.6)
            throw Failure(fmt::format("the plug-in did not take {} = {:g}: it shows '{}'",
                                      effect.parameterName(assignment.index), *assignment.shown,
                                      Printable(effect.parameterDisplay(assignment.index))));
    }
}

} // namespace vocafade::command
