// SPDX-License-Identifier: MIT
#include "ui/theme.h"

#include <cmath>
#include <string_view>

namespace vocafade::theme {
namespace {

template <class Action>
void ForEachLine(const CString& text, Action action) {
    std::string_view rest = text.str();
    for (;;) {
        const std::size_t end = rest.find('\n');
        action(CString(rest.substr(0, end)));
        if (end == std::string_view::npos) return;
        rest.remove_prefix(end + 1);
    }
}

} // namespace

CFont& UseControlFont(std::unique_ptr<CFont>& font) {
    if (font == nullptr) {
        font = std::make_unique<CFont>();
        font->CreatePointFont(kFontSize, "Sans");
    }
    return *font;
}

int CenteredTop(const CDC& dc, const CRect& rect) {
    constexpr int kRaised = 2;
    return rect.top + (rect.Height() - dc.GetTextExtent("").cy) / 2 + kRaised;
}

void DrawLine(CDC& dc, const CRect& rect, const CString& text, Align align, COLORREF color) {
    const int width = dc.GetTextExtent(text).cx;
    int x = rect.left;
    if (align == Align::center) x += (rect.Width() - width) / 2;
    if (align == Align::right) x = rect.right - width;
    dc.SetTextColor(color);
    dc.ExtTextOut(x, CenteredTop(dc, rect), ETO_CLIPPED, &rect, text);
}

void DrawLines(CDC& dc, const CRect& rect, const CString& text, COLORREF color) {
    const int height = dc.GetTextExtent("").cy;
    CRect line = rect;
    ForEachLine(text, [&](const CString& part) {
        line.bottom = line.top + height;
        DrawLine(dc, line, part, Align::left, color);
        line.OffsetRect(0, height);
    });
}

CSize MeasureLines(const CDC& dc, const CString& text) {
    CSize size;
    ForEachLine(text, [&](const CString& part) {
        const CSize line = dc.GetTextExtent(part);
        size.cx = std::max(size.cx, line.cx);
        size.cy += line.cy;
    });
    return size;
}

void DrawTick(CDC& dc, const CRect& rect, COLORREF color) {
    // In columns of device pixels: down to the left of the centre, then up.
    const double scale = dc.Scale();
    const auto fine = [scale](double logical) { return static_cast<int>(std::floor(logical * scale + 0.5)); };
    for (int x = fine(-3); x < fine(5); ++x) {
        const double at = (x + 0.5) / scale - 0.5;
        const double y = at < -1 ? at + 3 : 1 - at;
        dc.FillFine(rect.CenterPoint(), {x, fine(y - 1), x + 1, fine(y + 1)}, color);
    }
}

void DrawArrow(CDC& dc, const CRect& rect, bool up, COLORREF color) {
    const double scale = dc.Scale();
    const auto fine = [scale](double logical) { return static_cast<int>(std::floor(logical * scale + 0.5)); };
    for (int y = fine(-1); y < fine(2); ++y) {
        const double down = (y + 0.5) / scale + 0.5;
        const double half = up ? down : 2 - down;
        dc.FillFine(rect.CenterPoint(), {fine(-half), y, fine(half + 1), y + 1}, color);
    }
}

void DrawField(CDC& dc, const CRect& rect, COLORREF ground, bool focused) {
    dc.FillSolidRect(rect, ground);
    dc.FrameRect(rect, focused ? kFocus : kEdge);
}

} // namespace vocafade::theme
