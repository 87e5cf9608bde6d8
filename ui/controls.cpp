// SPDX-License-Identifier: MIT
#include "ui/controls.h"

#include "ui/popup.h"
#include "ui/theme.h"

namespace vocafade {
// --- CButton

bool CButton::Create(const char* caption, UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create(WindowClass{}, caption, style, rect, parent, id);
}

LRESULT CButton::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool inside = CRect({0, 0}, bounds().Size()).PtInRect(CPoint::FromMessage(lParam));
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetFocus();
        SetCapture();
        held_ = pressed_ = true;
        Invalidate();
        return 0;
    case WM_MOUSEMOVE:
        if (held_ && pressed_ != inside) {
            pressed_ = inside;
            Invalidate();
        }
        return 0;
    case WM_LBUTTONUP: {
        const bool click = held_ && inside;
        held_ = pressed_ = false;
        ReleaseCapture();
        Invalidate();
        if (click) Click();
        return 0;
    }
    case WM_CAPTURECHANGED:
        held_ = pressed_ = false;
        Invalidate();
        return 0;
    case WM_KEYDOWN:
        if (wParam == kKeyCharacter + ' ') Click();
        return 0;
    default:
        return Control::DefWindowProc(message, wParam, lParam);
    }
}

void CButton::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    const CRect all = dc.clientRect();
    dc.FillSolidRect(all, theme::kFace);
    // The one that Return means is dark, like a key of the panel; the focus is a ring around any.
    const bool dark = (GetStyle() & BS_DEFPUSHBUTTON) != 0;
    const COLORREF ground = dark ? (pressed_ ? RGB(35, 36, 39) : theme::kMarked)
                                 : (pressed_ ? RGB(205, 204, 198) : RGB(240, 240, 236));
    theme::DrawField(dc, all, ground, focused());
    if (focused()) {
        CRect mark = all;
        mark.DeflateRect(1, 1);
        dc.FrameRect(mark, theme::kFocus);
    }
    // Rounded, as the panel's keys are.
    for (const CPoint corner : {CPoint(all.left, all.top), CPoint(all.right - 1, all.top),
                                CPoint(all.left, all.bottom - 1), CPoint(all.right - 1, all.bottom - 1)}) {
        dc.FillSolidRect({corner.x, corner.y, corner.x + 1, corner.y + 1}, theme::kFace);
    }
    CRect face = all;
    if (pressed_) face.OffsetRect(0, 1);
    theme::DrawLine(dc, face, text_, theme::Align::center, dark ? theme::kMarkedText : theme::kText);
}

// --- CStatic

bool CStatic::Create(const char* text, UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create({0, kCursorArrow, {false, theme::kFace}}, text, style | WS_DISABLED, rect, parent,
                        id);
}

LRESULT CStatic::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_PAINT) return Control::DefWindowProc(message, wParam, lParam);
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    const CRect all = dc.clientRect();
    if (text_.str().find('\n') == std::string::npos) {
        theme::DrawLine(dc, all, text_,
                        (GetStyle() & SS_RIGHT) != 0 ? theme::Align::right : theme::Align::left,
                        theme::kText);
    } else {
        theme::DrawLines(dc, all, text_, theme::kText);
    }
    return 0;
}

// --- CComboBox

bool CComboBox::Create(UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create(WindowClass{}, "", style, rect, parent, id);
}

int CComboBox::AddString(const char* text) {
    entries_.emplace_back(text);
    return GetCount() - 1;
}

int CComboBox::SetCurSel(int index) {
    selected_ = index >= 0 && index < GetCount() ? index : -1;
    text_ = selected_ >= 0 ? entries_[static_cast<std::size_t>(selected_)] : CString();
    Invalidate();
    return selected_;
}

void CComboBox::Choose(int index) {
    if (index < 0 || index >= GetCount() || index == selected_) return;
    SetCurSel(index);
    NotifyParent(CBN_SELCHANGE);
}

void CComboBox::Step(int direction) {
    if (GetCount() > 0) Choose(std::clamp(selected_ + direction, 0, GetCount() - 1));
}

void CComboBox::ShowDropDown() {
    if (dropped_ || !IsWindow()) return;
    std::vector<CMenu::Item> items;
    items.reserve(entries_.size());
    for (const CString& entry : entries_)
        items.push_back(
            {items.size() == static_cast<std::size_t>(selected_) ? MF_CHECKED : MF_STRING, 0, entry, ""});
    const std::weak_ptr<bool> life = LifeToken();
    dropped_ = PopupWnd::Open(*this, {0, bounds().Height()}, bounds().Width(), bounds().Height(),
                              std::move(items), selected_, [this, life](int index) {
                                  if (life.expired() || !IsWindow()) return;
                                  dropped_ = false;
                                  Invalidate();
                                  Choose(index);
                              });
    Invalidate();
}

LRESULT CComboBox::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetFocus();
        ShowDropDown();
        return 0;
    case WM_MOUSEWHEEL:
        Step(static_cast<std::int16_t>(HIWORD(wParam)) > 0 ? -1 : 1);
        return 0;
    case WM_KEYDOWN:
        switch (wParam) {
        case kKeyUp:
            Step(-1);
            break;
        case kKeyDown:
            if (GetKeyState(VK_MENU) < 0) {
                ShowDropDown();
            } else {
                Step(1);
            }
            break;
        case kKeyPageUp:
            Step(-10);
            break;
        case kKeyPageDown:
            Step(10);
            break;
        case kKeyHome:
            Step(-GetCount());
            break;
        case kKeyEnd:
            Step(GetCount());
            break;
        case kKeyCharacter + ' ':
            ShowDropDown();
            break;
        default:
            break;
        }
        return 0;
    case WM_CHAR:
        Choose(NextWithLetter(wParam, lParam, selected_, GetCount(),
                              [this](int i) { return &entries_[static_cast<std::size_t>(i)]; }));
        return 0;
    default:
        return Control::DefWindowProc(message, wParam, lParam);
    }
}

void CComboBox::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    const CRect all = dc.clientRect();
    theme::DrawField(dc, all, theme::kField, focused() || dropped_);
    const int arrow = GetSystemMetrics(SM_CXHSCROLL) + theme::kPadding;
    theme::DrawLine(dc, {theme::kPadding + 1, 1, all.right - arrow, all.bottom - 1}, text_,
                    theme::Align::left, theme::kText);
    theme::DrawArrow(dc, {all.right - arrow, 0, all.right, all.bottom}, false, theme::kText);
}

} // namespace vocafade
