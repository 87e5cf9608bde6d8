// SPDX-License-Identifier: MIT
#pragma once

#include "ui/key_codes.h"

#include <cstdint>

/// The numbers that windows, messages and drawing speak in. Messages, styles and raster operations have their
/// Windows numbers, for readers who know them; nothing depends on that system. Key codes
/// and all names that begin with a k are this layer's own.
namespace vocafade {

using UINT = unsigned int;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

/// A colour: red in the low byte, then green, then blue.
using COLORREF = std::uint32_t;
constexpr COLORREF RGB(unsigned red, unsigned green, unsigned blue) {
    return (red & 0xFFU) | ((green & 0xFFU) << 8) | ((blue & 0xFFU) << 16);
}
constexpr unsigned GetRValue(COLORREF c) { return c & 0xFFU; }
constexpr unsigned GetGValue(COLORREF c) { return (c >> 8) & 0xFFU; }
constexpr unsigned GetBValue(COLORREF c) { return (c >> 16) & 0xFFU; }

constexpr WPARAM MAKEWPARAM(unsigned low, unsigned high) {
    return (low & 0xFFFFU) | ((high & 0xFFFFU) << 16);
}
constexpr unsigned LOWORD(std::uintptr_t v) { return static_cast<unsigned>(v & 0xFFFFU); }
constexpr unsigned HIWORD(std::uintptr_t v) { return static_cast<unsigned>((v >> 16) & 0xFFFFU); }

/// @name Messages
/// wParam is 0 where nothing else is said; mouse messages carry the place as `CPoint::FromMessage(lParam)`.
/// @{
inline constexpr UINT WM_CREATE = 1;        ///< first message; -1 as the answer refuses the window
inline constexpr UINT WM_DESTROY = 2;       ///< the last message; the children get theirs after it
inline constexpr UINT WM_MOVE = 3;          ///< lParam: new place in the parent
inline constexpr UINT WM_SIZE = 5;          ///< lParam: new client width and height in 16 bits each
inline constexpr UINT WM_SETFOCUS = 7;      ///< the keyboard comes to this window
inline constexpr UINT WM_KILLFOCUS = 8;     ///< the keyboard leaves this window
inline constexpr UINT WM_PAINT = 15;        ///< draw yourself (make a CPaintDC)
inline constexpr UINT WM_CLOSE = 16;        ///< the user wants the window closed
inline constexpr UINT WM_ERASEBKGND = 20;   ///< wParam: the `CDC*` to draw the ground into
inline constexpr UINT WM_SHOWWINDOW = 24;   ///< wParam: 1 shown, 0 hidden
inline constexpr UINT WM_KEYDOWN = 256;     ///< wParam: a key code (see `kKeyReturn` and the rest)
inline constexpr UINT WM_KEYUP = 257;       ///< wParam: a key code
inline constexpr UINT WM_CHAR = 258;        ///< wParam: a Unicode code point, 37/39 for arrows (`kCharArrow`)
inline constexpr UINT WM_INITDIALOG = 272;  ///< a dialog's controls exist
inline constexpr UINT WM_COMMAND = 273;     ///< wParam: id | notification << 16, lParam: the `CWnd*` or 0
inline constexpr UINT WM_TIMER = 275;       ///< always with timer number 0
inline constexpr UINT WM_MOUSEMOVE = 512;   ///< also while dragging
inline constexpr UINT WM_LBUTTONDOWN = 513; ///< first press
inline constexpr UINT WM_LBUTTONUP = 514;   ///< release
inline constexpr UINT WM_LBUTTONDBLCLK = 515;  ///< second and further quick presses
inline constexpr UINT WM_MBUTTONDOWN = 519;    ///< a press of the middle button; nothing is held by it
inline constexpr UINT WM_MOUSEWHEEL = 522;     ///< wParam high word: signed, whole notches, upwards positive
inline constexpr UINT WM_EXITMENULOOP = 530;   ///< to a menu's owner: the menu is gone
inline constexpr UINT WM_CAPTURECHANGED = 533; ///< the mouse was taken from this window
inline constexpr UINT WM_USER = 1024;
/// Without a target: makes the windows that were put off until no handler runs (`MessageQueue::DeferCreate`).
inline constexpr UINT WM_DEFERRED_CREATE = WM_USER + 4;
/// To a top-level window: everything is drawn at another scale from now on (`DrawingScale`).
inline constexpr UINT WM_SCALECHANGED = WM_USER + 5;
/// @}

/// A notch of the wheel in WM_MOUSEWHEEL.
inline constexpr int WHEEL_DELTA = 120;

/// @name Flags of OnChar (bits 16 to 31 of lParam)
/// @{
/// The 37 or 39 is an arrow key, not a typed "%" or "'".
inline constexpr UINT kCharArrow = 0x100;
/// Typed with the keypad's decimal key, which is a comma on many layouts.
inline constexpr UINT kCharKeypadDecimal = 0x200;
/// @}

/// @name Arguments of GetKeyState
/// @{
inline constexpr int VK_LBUTTON = 1;
inline constexpr int VK_SHIFT = 16;
inline constexpr int VK_CONTROL = 17;
inline constexpr int VK_MENU = 18;
/// @}

/// @name Window class styles, stock brushes
/// @{
inline constexpr UINT CS_DBLCLKS = 8;
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int NULL_BRUSH = 5;
/// @}

/// @name Window styles
/// @{
inline constexpr UINT WS_POPUP = 0x80000000;
inline constexpr UINT WS_CHILD = 0x40000000;
inline constexpr UINT WS_VISIBLE = 0x10000000;
inline constexpr UINT WS_DISABLED = 0x08000000;
inline constexpr UINT WS_CLIPSIBLINGS = 0x04000000;
inline constexpr UINT WS_CAPTION = 0x00C00000;
inline constexpr UINT WS_TABSTOP = 0x00010000;
inline constexpr UINT ES_RIGHT = 2;
inline constexpr UINT SS_RIGHT = 2;
inline constexpr UINT BS_DEFPUSHBUTTON = 1;
inline constexpr UINT UDS_SETBUDDYINT = 0x02;
inline constexpr UINT UDS_ALIGNRIGHT = 0x04;
inline constexpr UINT UDS_ARROWKEYS = 0x20;
inline constexpr UINT UDS_NOTHOUSANDS = 0x80;
/// @}

/// @name ShowWindow and SetWindowPos
/// @{
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOW = 5;
inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
/// @}

/// @name Notifications (high word of WM_COMMAND's wParam)
/// @{
inline constexpr UINT BN_CLICKED = 0;
inline constexpr UINT CBN_SELCHANGE = 1;
/// @}

/// @name Menus
/// @{
inline constexpr UINT MF_STRING = 0;
inline constexpr UINT MF_GRAYED = 0x0001;
inline constexpr UINT MF_DISABLED = 0x0002;
inline constexpr UINT MF_CHECKED = 0x0008;
inline constexpr UINT TPM_RIGHTBUTTON = 2;
/// @}

/// @name Dialogs and message boxes
/// @{
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr UINT MB_OK = 0;
inline constexpr UINT MB_OKCANCEL = 1;
inline constexpr UINT MB_YESNO = 4;
/// @}

/// @name GetSystemMetrics
/// @{
inline constexpr int SM_CXHSCROLL = 3; ///< also the width of a spin button
inline constexpr int SM_CXEDGE = 45;
/// @}

/// @name Drawing
/// @{
inline constexpr UINT SRCCOPY = 0x00CC0020;
inline constexpr UINT SRCINVERT = 0x00660046;
inline constexpr UINT SRCAND = 0x008800C6;
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
inline constexpr UINT ETO_OPAQUE = 2;
inline constexpr UINT ETO_CLIPPED = 4;
/// @}

} // namespace vocafade
