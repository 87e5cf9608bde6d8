// SPDX-License-Identifier: MIT
#pragma once

#include "ui/wnd.h"

namespace vocafade::theme {

/// How the layer's own controls, menus and dialogs look: plain and quiet, so that the panel stays the
/// picture.
inline constexpr int kPadding = 4;
inline constexpr int kFontSize = 12;

enum class Align { left, center, right };

/// Creates `font` as the one of controls unless it exists.
CFont& UseControlFont(std::unique_ptr<CFont>& font);

/// The y for `CDC::TextOut` that centres a line of `font` in `rect`. (A context puts the baseline 2 pixels
/// higher than the font's own ascent would.)
int CenteredTop(const CDC& dc, const CRect& rect);

/// One line of text inside `rect`, centred in height, clipped.
void DrawLine(CDC& dc, const CRect& rect, const CString& text, Align align, COLORREF color);

/// Text of several lines from the top of `rect`.
void DrawLines(CDC& dc, const CRect& rect, const CString& text, Align align, COLORREF color);

/// The size that `DrawLines` needs.
CSize MeasureLines(const CDC& dc, const CString& text);

/// A tick mark around the centre of `rect`.
void DrawTick(CDC& dc, const CRect& rect, COLORREF color);

/// A small triangle around the centre of `rect`, pointing down, or up.
void DrawArrow(CDC& dc, const CRect& rect, bool up, COLORREF color);

/// The ground and the border of a control that is typed into or pressed.
void DrawField(CDC& dc, const CRect& rect, COLORREF ground, bool focused);

} // namespace vocafade::theme
