// SPDX-License-Identifier: MIT
#include "effect/parameters.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace vocafade {
namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kLowestDb = -100.0;

/// Two rows more than there are parameters: conversions answer 0 for them.
constexpr ParameterRange kTable[] = {
    {0.0, 1.0, 1.0, 1},         {0.001, 2.0, 1.0, 0},  {0.001, 1.0, 1.0, 0}, {20.0, 20000.0, 400.0, 0},
    {20.0, 20000.0, 9000.0, 0}, {0.0, 127.0, 64.0, 0}, {0.0, 0.0, 0.0, 0},   {0.0, 0.0, 0.0, 0},
};
constexpr ParameterRange kNoParameter{0.0, 0.0, 0.0, 0};

constexpr const char* kNames[kParameterCount] = {"ON/OFF", "Output", "Input", "LoFreq", "HiFreq", "Position"};
constexpr const char* kLabels[kParameterCount] = {"", "dB", "dB", "Hz", "Hz", ""};

bool IsLevel(std::int32_t index) { return index == kParameterOutput || index == kParameterInput; }

bool IsParameter(std::int32_t index) { return index >= 0 && index < kParameterCount; }

double LevelLimitDb(std::int32_t index) { return index == kParameterOutput ? 6.0 : 0.0; }

double LevelDb(std::int32_t index, double gain) {
    return std::clamp(GainToDb(gain), kLowestDb, LevelLimitDb(index));
}

/// The internal value in double precision; `row` is that of `index`.
double InternalValue(std::int32_t index, const ParameterRange& row, float normalised) {
    const double range = row.maximum - row.minimum;
    if (!std::isfinite(normalised)) normalised = 0.0f;
    if (row.integer != 0) {
        return std::clamp(std::floor(normalised / (1.0 / range) + 0.5), row.minimum, row.maximum);
    }
    const double value = std::clamp(range * normalised + row.minimum, row.minimum, row.maximum);
    return IsLevel(index) ? LevelDb(index, value) : value;
}

} // namespace

const char* ParameterName(std::int32_t index) { return IsParameter(index) ? kNames[index] : ""; }

const char* ParameterLabel(std::int32_t index) { return IsParameter(index) ? kLabels[index] : ""; }

const ParameterRange& ParameterRow(std::int32_t index) {
    return index >= 0 && index < std::ssize(kTable) ? kTable[index] : kNoParameter;
}

double GainToDb(double gain) { return 6.0 * std::log(gain) / kLn2; }

float ValToNormalizeValue(std::int32_t index, float value) {
    if (!IsParameter(index)) return 0.0f;
    const ParameterRange& row = ParameterRow(index);
    const double range = row.maximum - row.minimum;
    if (!std::isfinite(value)) value = static_cast<float>(row.minimum);
    if (row.integer != 0) return static_cast<float>(value * (1.0 / range));
    return static_cast<float>(std::clamp((value - row.minimum) / range, 0.0, 1.0));
}

float NormalizeValToInternalVal(std::int32_t index, float normalised) {
    if (!IsParameter(index)) return 0.0f;
    return static_cast<float>(InternalValue(index, ParameterRow(index), normalised));
}

std::uint32_t NormalizeValToDWValue(std::int32_t index, float normalised) {
    if (!IsParameter(index)) return 0;
    const ParameterRange& row = ParameterRow(index);
    const double value = InternalValue(index, row, normalised);
    if (row.integer != 0) return static_cast<std::uint32_t>(value);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(value * 65536.0));
}

void GetParamMinMax(std::int32_t index, float* minimum, float* maximum) {
    const ParameterRange& row = ParameterRow(index);
    *minimum = static_cast<float>(IsLevel(index) ? LevelDb(index, row.minimum) : row.minimum);
    *maximum = static_cast<float>(IsLevel(index) ? LevelDb(index, row.maximum) : row.maximum);
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
