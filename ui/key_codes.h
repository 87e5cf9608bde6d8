// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade {

/// @name Key codes of WM_KEYDOWN and WM_KEYUP
/// The numbering that the entry fields are written against. Keys that type a character have codes of their
/// own range (`kKeyCharacter` + the upper-case ASCII sign), so that none of them can pass for Return.
/// @{
inline constexpr unsigned kKeyKeypadEnter = 35;
inline constexpr unsigned kKeyReturn = 36;
inline constexpr unsigned kKeyTab = 48;
inline constexpr unsigned kKeyBackspace = 51;
inline constexpr unsigned kKeyEscape = 53;
inline constexpr unsigned kKeyKeypadDecimal = 65;
inline constexpr unsigned kKeyHome = 115;
inline constexpr unsigned kKeyPageUp = 116;
inline constexpr unsigned kKeyDelete = 117;
inline constexpr unsigned kKeyEnd = 119;
inline constexpr unsigned kKeyPageDown = 121;
inline constexpr unsigned kKeyLeft = 123;
inline constexpr unsigned kKeyRight = 124;
inline constexpr unsigned kKeyDown = 125;
inline constexpr unsigned kKeyUp = 126;
inline constexpr unsigned kKeyUnknown = 255;
inline constexpr unsigned kKeyCharacter = 0x100;
/// @}

/// @name Looks of the pointer
/// @{
inline constexpr unsigned kCursorArrow = 32512;
inline constexpr unsigned kCursorIBeam = 32513;
/// @}

} // namespace vocafade
