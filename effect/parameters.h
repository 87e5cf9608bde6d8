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

/// [any-thread] A parameter's name and unit; empty for any other index.
const char* ParameterName(std::int32_t index);
const char* ParameterLabel(std::int32_t index);

/// One row of the parameter table. For the two levels the numbers are linear gain factors.
struct ParameterRange {
    double minimum;
    double maximum;
    double initial;
    std::int32_t integer; ///< non-zero: the parameter moves in whole steps
};

/// [any-thread] The row of `index`; all zero for indices without a parameter.
const ParameterRange& ParameterRow(std::int32_t index);

/// [any-thread] A value in the parameter's own unit (for the levels: the linear gain) as the host's 0 to 1.
/// Stepped parameters are not clamped. 0 for an index above 7; not-a-number counts as the minimum.
float ValToNormalizeValue(std::int32_t index, float value);

/// [any-thread] The host's value in the parameter's internal unit: on/off, dB (6 log2 of the gain, so exactly
/// 6 dB a doubling), Hz, position 0 to 127. Clamped to the parameter's range; what is no number counts as its
/// minimum. 0 for an index of 8 or above.
float NormalizeValToInternalVal(std::int32_t index, float normalised);

/// [any-thread] The same as a whole number: steps as they are, the others in 16.16 fixed point, of which a
/// negative level keeps the low 32 bits.
std::uint32_t NormalizeValToDWValue(std::int32_t index, float normalised);

/// [any-thread] A parameter's range in its internal unit; 0 to 0 for an index without a parameter.
void GetParamMinMax(std::int32_t index, float* minimum, float* maximum);

/// [any-thread] 6 log2(gain), the "dB" of levels and meters.
double GainToDb(double gain);

/// [any-thread] The default normalised value of a parameter.
float DefaultNormalizedValue(std::int32_t index);

/// [any-thread] A float cut to an integer; what is no number gives 0, what does not fit the nearest that
/// does.
std::int32_t TruncateToInt(float value);

} // namespace vocafade
