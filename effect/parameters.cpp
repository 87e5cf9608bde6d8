// SPDX-License-Identifier: MIT
#include "effect/parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vocafade {
namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kLowestDb = -100.0;

constexpr ParameterRange kTable[kParameterCount] = {
    {"ON/OFF", "", 0.0, 1.0, 1.0, Taper::step},
    {"Output", "dB", 0.001, 2.0, 1.0, Taper::gain},
    {"Input", "dB", 0.001, 1.0, 1.0, Taper::gain},
    {"LoFreq", "Hz", 20.0, 20000.0, 400.0, Taper::frequency},
    {"HiFreq", "Hz", 20.0, 20000.0, 9000.0, Taper::frequency},
    {"Position", "", 0.0, 127.0, 64.0, Taper::even},
};
constexpr ParameterRange kNoParameter{"", "", 0.0, 0.0, 0.0, Taper::even};

bool IsParameter(std::int32_t index) { return index >= 0 && index < kParameterCount; }

double LevelDb(const ParameterRange& row, double gain) {
    return std::clamp(GainToDb(gain), kLowestDb, GainToDb(row.maximum));
}

/// The internal value in double precision.
double InternalValue(const ParameterRange& row, float normalised) {
    const double range = row.maximum - row.minimum;
    if (std::isnan(normalised)) normalised = 0.0f;
    if (row.taper == Taper::step) {
        return std::clamp(std::floor(normalised / (1.0 / range) + 0.5), row.minimum, row.maximum);
    }
    const double value = std::clamp(range * normalised + row.minimum, row.minimum, row.maximum);
    return row.taper == Taper::gain ? LevelDb(row, value) : value;
}

} // namespace

const ParameterRange& ParameterRow(std::int32_t index) {
    return IsParameter(index) ? kTable[index] : kNoParameter;
}

ShownRange ShownRangeOf(std::int32_t index) {
    const ParameterRange& row = ParameterRow(index);
    if (row.taper != Taper::gain) return {row.minimum, row.maximum, row.initial};
    return {LevelDb(row, row.minimum), LevelDb(row, row.maximum), LevelDb(row, row.initial)};
}

double GainToDb(double gain) { return 6.0 * std::log(gain) / kLn2; }

float ValToNormalizeValue(std::int32_t index, float value) {
    if (!IsParameter(index)) return 0.0f;
    const ParameterRange& row = ParameterRow(index);
    const double range = row.maximum - row.minimum;
    if (std::isnan(value)) value = static_cast<float>(row.minimum);
    if (row.taper == Taper::step) return static_cast<float>(value * (1.0 / range));
    return static_cast<float>(std::clamp((value - row.minimum) / range, 0.0, 1.0));
}

float NormalizeDisplayValue(std::int32_t index, float display) {
    const ParameterRange& row = ParameterRow(index);
    if (row.taper != Taper::gain) return ValToNormalizeValue(index, display);
    const float gain = static_cast<float>(std::exp2(display / 6.0));
    return ValToNormalizeValue(
        index, std::clamp(gain, static_cast<float>(row.minimum), static_cast<float>(row.maximum)));
}

float NormalizeWholeDisplayValue(std::int32_t index, float display) {
    const ParameterRange& row = ParameterRow(index);
    float normalised = std::clamp(NormalizeDisplayValue(index, display), 0.0f, 1.0f);
    const bool cut = row.taper == Taper::frequency || row.taper == Taper::even;
    // What is cut to 0 needs no step; the floats next to 0 are so many that to go through them takes too long.
    if (!cut || !std::isfinite(display) || display < 1.0f) return normalised;
    const double wanted = std::min<double>(display, row.maximum);
    while ((row.maximum - row.minimum) * normalised + row.minimum < wanted)
        normalised = std::nextafter(normalised, 2.0f);
    return std::min(normalised, 1.0f);
}

float NormalizeValToInternalVal(std::int32_t index, float normalised) {
    if (!IsParameter(index)) return 0.0f;
    return static_cast<float>(InternalValue(ParameterRow(index), normalised));
}

std::uint32_t NormalizeValToDWValue(std::int32_t index, float normalised) {
    if (!IsParameter(index)) return 0;
    const ParameterRange& row = ParameterRow(index);
    const double value = InternalValue(row, normalised);
    if (row.taper == Taper::step) return static_cast<std::uint32_t>(value);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(value * 65536.0));
}

void GetParamMinMax(std::int32_t index, float* minimum, float* maximum) {
    const ShownRange shown = ShownRangeOf(index);
    *minimum = static_cast<float>(shown.minimum);
    *maximum = static_cast<float>(shown.maximum);
}

float DefaultNormalizedValue(std::int32_t index) {
    return ValToNormalizeValue(index, static_cast<float>(ParameterRow(index).initial));
}

std::int32_t TruncateToInt(float value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0f) return Limits::max();
    if (value < -2147483648.0f) return Limits::min();
    return static_cast<std::int32_t>(value);
}

} // namespace vocafade
