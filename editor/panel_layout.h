// SPDX-License-Identifier: MIT
#pragma once

#include "effect/parameters.h"
#include "ui/geometry.h"

#include <array>

/// Where everything stands on the panel, in pixels of its client area. The bitmaps are drawn to fit these
/// places, so neither moves without the other.
namespace vocafade::layout {

// Ids that the controls report with.
inline constexpr int kInputFader = 106;
inline constexpr int kOutputFader = 107;
inline constexpr int kOnOffSwitch = 108;
inline constexpr int kLoFreqFader = 109;
inline constexpr int kHiFreqFader = 110;
inline constexpr int kPositionKnob = 111;
inline constexpr int kCopyButton = 131;

// Commands of the menu of programs, which opens at the copy button: the program's number is added to the
// first.
inline constexpr unsigned kFirstCopyCommand = 1010;
inline constexpr unsigned kLastCopyCommand = 1110;

inline constexpr CRect kInputFaderRect{48, 45, 64, 178};
inline constexpr CRect kOutputFaderRect{413, 45, 429, 178};
inline constexpr CRect kLoFreqFaderRect{141, 45, 157, 178};
inline constexpr CRect kHiFreqFaderRect{229, 45, 245, 178};
inline constexpr CRect kKnobRect{307, 147, 341, 181};
inline constexpr CRect kOnOffRect{24, 7, 49, 28};
inline constexpr CRect kCopyRect{64, 10, 91, 29};
inline constexpr CRect kModifyRect{216, 10, 259, 26};
inline constexpr CRect kSaveRect{270, 10, 313, 26};

inline constexpr CRect kInputReadout{14, 184, 48, 200};
inline constexpr CRect kOutputReadout{414, 184, 448, 200};
inline constexpr CRect kLoFreqReadout{125, 184, 174, 200};
inline constexpr CRect kHiFreqReadout{213, 184, 262, 200};
inline constexpr CRect kPositionReadout{300, 184, 349, 200};

/// A read-out, and how its entry field is set up.
struct Readout {
    int parameter;
    int entryId; ///< number of the read-out while its entry field shows
    CRect rect;
    int spinFactor;  ///< range of the entry field's spin button, in parameter units
    int clampFactor; ///< range that a confirmed value is held in, in parameter units
    bool withSign;
    int width; ///< characters of the entry field, less one
};

using Readouts = std::array<Readout, 5>;
/// From left to right, which is the order of the Tab key. The factors of HiFreq and Position are the wide
/// ones that they have always had: a confirmed HiFreq is held between 2000 and two million, a Position below
/// 12700.
inline constexpr Readouts kReadouts{{
    {kParameterInput, 126, kInputReadout, 10, 1, true, 4},
    {kParameterLoFreq, 128, kLoFreqReadout, 10, 1, false, 6},
    {kParameterHiFreq, 129, kHiFreqReadout, 1000, 100, false, 6},
    {kParameterPosition, 130, kPositionReadout, 1000, 100, false, 4},
    {kParameterOutput, 127, kOutputReadout, 10, 1, true, 4},
}};

/// Left edges of the meters: input left and right, output left and right.
inline constexpr std::array<int, 4> kMeterX{29, 38, 432, 441};
inline constexpr int kMeterY = 45;
inline constexpr float kMeterFloorDb = -38.0f; ///< at their lower end

/// Where the menu of programs opens: the copy button's right edge.
inline constexpr CPoint kCopyMenuPlace{91, 13};

} // namespace vocafade::layout
