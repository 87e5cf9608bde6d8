// SPDX-License-Identifier: MIT
#pragma once

#include "editor/resource_ids.h"
#include "effect/parameters.h"
#include "ui/geometry.h"

#include <array>

/// Where everything stands on the panel, in pixels of its client area. The bitmaps are drawn to fit these
/// places, so neither moves without the other.
namespace vocafade::layout {

/// How the entry field of a read-out is set up.
struct Entry {
    int id = -1;         ///< of the read-out while its entry field shows; -1 for a control without one
    int spinFactor = 0;  ///< range of the field's spin button, in parameter units
    int clampFactor = 0; ///< range that a confirmed value is held in, in parameter units
    bool withSign = false;
    int width = 0;   ///< characters of the field, less one
    int step = 1;    ///< of the arrows, keys and wheel, in tenths of what is shown; Shift makes it one tenth
    int growth = 10; ///< a held arrow or key comes to step this many times as far
};

/// A control that moves a parameter.
struct PanelControl {
    int id; ///< that it reports with
    int parameter;
    int picture; ///< resource: a fader's track, the knob's strip, the switched-off switch
    bool decadeTaper;
    CRect rect;
    CRect readout; ///< empty for none
    Entry entry;
};

inline constexpr int kOnOffSwitch = 108;
inline constexpr int kCopyButton = 131;

// Commands of the menu of programs, which opens at the copy button: the program's number is added to the
// first.
inline constexpr unsigned kFirstCopyCommand = 1010;
inline constexpr unsigned kLastCopyCommand = 1110;

/// From left to right, which is the order of the Tab key. The wide factors of HIGH and POSITION are explained
/// in docs/compatibility.md.
inline constexpr std::array<PanelControl, 6> kControls{{
    {kOnOffSwitch, kParameterOnOff, resource::kSwitchOff, false, {24, 7, 49, 28}, {}, {}},
    {106,
     kParameterInput,
     resource::kFaderTrack,
     true,
     {48, 45, 64, 178},
     {14, 184, 48, 200},
     {126, 10, 1, true, 4, 1, 10}},
    {109,
     kParameterLoFreq,
     resource::kFaderTrack,
     true,
     {141, 45, 157, 178},
     {125, 184, 174, 200},
     {128, 10, 1, false, 6, 10, 100}},
    {110,
     kParameterHiFreq,
     resource::kFaderTrack,
     true,
     {229, 45, 245, 178},
     {213, 184, 262, 200},
     {129, 1000, 100, false, 6, 10, 100}},
    {111,
     kParameterPosition,
     resource::kKnobStrip,
     false,
     {307, 147, 341, 181},
     {300, 184, 349, 200},
     {130, 1000, 100, false, 4, 10, 1}},
    {107,
     kParameterOutput,
     resource::kFaderTrack,
     true,
     {413, 45, 429, 178},
     {414, 184, 448, 200},
     {127, 10, 1, true, 4, 1, 10}},
}};

/// The place of a control in `kControls` that has this value in `member`; the number of controls when none has.
template <class Value>
constexpr std::size_t IndexOf(Value PanelControl::*member, Value value) {
    std::size_t at = 0;
    while (at < kControls.size() && kControls[at].*member != value)
        ++at;
    return at;
}

/// The control of a parameter.
constexpr const PanelControl& ControlOf(int parameter) {
    return kControls[IndexOf(&PanelControl::parameter, parameter)];
}

/// Width of the frame that the panel's picture has around a read-out.
inline constexpr int kReadoutFrame = 1;

inline constexpr int kKnobFrames = 61;
inline constexpr float kKnobAngleMin = 30.0f; ///< degrees clockwise from straight down
inline constexpr float kKnobAngleMax = 330.0f;

inline constexpr CRect kCopyRect{64, 10, 91, 29};
inline constexpr CRect kModifyRect{216, 10, 259, 26};
inline constexpr CRect kSaveRect{270, 10, 313, 26};
/// Where the menu of programs opens: the copy button's right edge.
inline constexpr CPoint kCopyMenuPlace{91, 13};

// Where the editor's settings stand: the user's file for this name, its section, and the entries.
inline constexpr char kSettingsApplication[] = "vocafade";
inline constexpr char kSettingsSection[] = "editor";
inline constexpr char kTipsSetting[] = "tooltips"; ///< 0: none

/// Left edges of the meters: input left and right, output left and right.
inline constexpr std::array<int, 4> kMeterX{29, 38, 432, 441};
inline constexpr int kMeterY = 45;
inline constexpr float kMeterFloorDb = -38.0f; ///< at their lower end
/// A meter's row of 0 dB, and how many rows a decibel takes (upwards).
inline constexpr float kMeterZeroRow = 19.0f;
inline constexpr float kMeterRowsPerDb = -3.0f;

} // namespace vocafade::layout
