// SPDX-License-Identifier: MIT
#pragma once

/// Numbers of the editor's resources.
namespace vocafade::resource {

inline constexpr int kBackground = 3005; ///< its size is the editor's
inline constexpr int kSwitchOff = 3002;
inline constexpr int kSwitchOn = 3003;
inline constexpr int kKnobStrip = 3004;
inline constexpr int kFaderTrack = 3006;
inline constexpr int kFaderThumb = 3007;
inline constexpr int kMeter = 3008;
inline constexpr int kCopyOn = 3011;
inline constexpr int kCopyOff = 3012;
inline constexpr int kSave = 3013;
inline constexpr int kModified = 3014;
// Loaded and kept, but not shown: there is no clip detection.
inline constexpr int kSpare = 3001;
inline constexpr int kClipOff = 3009;
inline constexpr int kClipOn = 3010;

// Tooltips.
inline constexpr int kTipOff = 20200;
inline constexpr int kTipOn = 20201;
inline constexpr int kTipCopy = 20202;
inline constexpr int kTipUnmodified = 20203;
inline constexpr int kTipModified = 20204;
inline constexpr int kTipSave = 20205;
inline constexpr int kFirstControlTip = 20210; ///< with a parameter's number added

inline constexpr int kSaveDialog = 5040;
inline constexpr int kSaveDialogPrograms = 1120;
inline constexpr int kSaveDialogName = 5000;

} // namespace vocafade::resource
