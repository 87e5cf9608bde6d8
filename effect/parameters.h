// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vocafade {

/// The six automatable parameters, in the order of the host's indices and of a program record's values.
enum ParameterIndex : std::int32_t {
    kParameterOnOff = 0,
    kParameterOutput = 1,
    kParameterInput = 2,
    kParameterLoFreq = 3,
    kParameterHiFreq = 4,
    kParameterPosition = 5,
    kParameterCount = 6,
};

/// How a parameter runs from its minimum to its maximum.
enum class Taper : std::uint8_t {
    step,      ///< in whole steps
    gain,      ///< evenly in gain; shown and typed in dB
    frequency, ///< evenly in Hz; the editor's faders and the wheel give each octave more even room
    even,      ///< evenly
};

/// One row of the parameter table, from which plug-in, command and documents take what they say.
struct ParameterRange {
    const char* name;
    const char* unit; ///< of the display; empty for none
    double minimum;   ///< for a gain, this and the next two are linear factors
    double maximum;
    double initial;
    Taper taper;
};

/// [any-thread] The row of `index`; for an index without a parameter all zero, with empty texts.
const ParameterRange& ParameterRow(std::int32_t index);

/// The same row as the display shows it: levels in dB.
struct ShownRange {
    double minimum;
    double maximum;
    double initial;
};

/// [any-thread] What the display of `index` goes through; all zero for an index without a parameter.
ShownRange ShownRangeOf(std::int32_t index);

/// [any-thread] A value in the parameter's own unit (for the levels: the linear gain) as the host's 0 to 1.
/// Stepped parameters are not clamped. 0 for an index without a parameter; NaN counts as the minimum.
float ValToNormalizeValue(std::int32_t index, float value);

/// [any-thread] A value as the display shows it (on/off, dB, Hz, position) as the host's 0 to 1. Levels are
/// limited to their range.
float NormalizeDisplayValue(std::int32_t index, float display);

/// [any-thread] The same, limited to the range and where needed the next greater float, so that the whole
/// number that the engine cuts Hz and Position to is not below `display`: 64 must not become 63.
float NormalizeWholeDisplayValue(std::int32_t index, float display);

/// [any-thread] The host's value in the parameter's internal unit: on/off, dB (6 log2 of the gain, so exactly
/// 6 dB a doubling), Hz, position 0 to 127. Clamped to the parameter's range; NaN counts as its minimum. 0
/// for an index without a parameter.
float NormalizeValToInternalVal(std::int32_t index, float normalised);

/// [any-thread] The same as a whole number: steps as they are, the others in 16.16 fixed point, of which a
/// negative level keeps the low 32 bits.
std::uint32_t NormalizeValToDWValue(std::int32_t index, float normalised);

/// [any-thread] `ShownRangeOf` in single precision.
void GetParamMinMax(std::int32_t index, float* minimum, float* maximum);

/// [any-thread] 6 log2(gain), the "dB" of levels and meters.
double GainToDb(double gain);

/// [any-thread] The default normalised value of a parameter.
float DefaultNormalizedValue(std::int32_t index);

/// [any-thread] A float cut to an integer; NaN gives 0, what does not fit the nearest that does.
std::int32_t TruncateToInt(float value);

} // namespace vocafade
