// SPDX-License-Identifier: MIT
#pragma once

#include "ui/wnd.h"

namespace vocafade::theme {

/// How the layer's own controls, menus and dialogs look: plain and quiet, so that the panel stays the
/// picture. Everything here is [main-thread].
inline constexpr int kPadding = 4;
inline constexpr int kFontSize = 12;

// The faceplate's own colours: what shows is light with dark print, what one takes hold of is dark.
inline constexpr COLORREF kFace = RGB(221, 220, 215);  ///< of dialogs
inline constexpr COLORREF kField = RGB(248, 248, 244); ///< what is typed into or chosen from
inline constexpr COLORREF kText = RGB(52, 54, 58);
inline constexpr COLORREF kGrayText = RGB(126, 127, 129); ///< what cannot be chosen
inline constexpr COLORREF kMarked = RGB(58, 60, 64);
inline constexpr COLORREF kMarkedText = RGB(241, 240, 236);
inline constexpr COLORREF kEdge = RGB(139, 139, 136);
inline constexpr COLORREF kFocus = RGB(190, 116, 0); ///< the ring around what has the focus

enum class Align { left, center, right };

/// Creates `font` as the one of controls unless it exists.
CFont& UseControlFont(std::unique_ptr<CFont>& font);

/// The y for `CDC::TextOut` that centres a line of `font` in `rect`. (A context puts the baseline 2 pixels
/// higher than the font's own ascent would.)
int CenteredTop(const CDC& dc, const CRect& rect);

/// One line of text inside `rect`, centred in height, clipped.
void DrawLine(CDC& dc, const CRect& rect, const CString& text, Align align, COLORREF color);

/// Text of several lines from the top of `rect`.
void DrawLines(CDC& dc, const CRect& rect, const CString& text, COLORREF color);

/// The size that `DrawLines` needs.
CSize MeasureLines(const CDC& dc, const CString& text);

/// A tick mark around the centre of `rect`.
void DrawTick(CDC& dc, const CRect& rect, COLORREF color);

/// A small triangle around the centre of `rect`, pointing down, or up.
void DrawArrow(CDC& dc, const CRect& rect, bool up, COLORREF color);

/// The ground and the border of a control that is typed into or pressed.
void DrawField(CDC& dc, const CRect& rect, COLORREF ground, bool focused);

} // namespace vocafade::theme
