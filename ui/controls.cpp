// SPDX-License-Identifier: MIT
#include "ui/controls.h"

#include "ui/popup.h"
#include "ui/theme.h"

namespace vocafade {
namespace {

void SelectFont(CDC& dc, const CWnd& window, std::unique_ptr<CFont>& own) {
    dc.SelectObject(window.GetFont() != nullptr ? window.GetFont() : &theme::UseControlFont(own));
}

} // namespace

// --- CButton
// ---------------------------------------------------------------------------------------------------------

bool CButton::Create(const char* caption, UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create(WindowClass{}, caption, style, rect, parent, id);
}

void CButton::SetCheck(int state) {
    checked_ = state != 0;
    Invalidate();
}

void CButton::Click() {
    if ((GetStyle() & 0xFU) == BS_AUTOCHECKBOX) SetCheck(checked_ ? 0 : 1);
    NotifyParent(BN_CLICKED);
}

LRESULT CButton::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool inside = CRect({0, 0}, bounds().Size()).PtInRect(CPoint::FromMessage(lParam));
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        focused_ = message == WM_SETFOCUS;
        Invalidate();
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
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

void CButton::Paint() {
    CPaintDC dc(this);
    SelectFont(dc, *this, ownFont_);
    const CRect all = dc.clientRect();
    const COLORREF text = GetSysColor(IsWindowEnabled() ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
    const UINT kind = GetStyle() & 0xFU;
    dc.FillSolidRect(all, GetSysColor(COLOR_3DFACE));
    if (kind == BS_CHECKBOX || kind == BS_AUTOCHECKBOX) {
        constexpr int kBox = 15;
        const CRect box({0, (all.Height() - kBox) / 2}, {kBox, kBox});
        theme::DrawField(dc, box, GetSysColor(COLOR_WINDOW), focused_);
        if (checked_) theme::DrawTick(dc, box, text);
        theme::DrawLine(dc, {box.right + theme::kPadding, 0, all.right, all.bottom}, text_,
                        theme::Align::left, text);
        return;
    }
    // The one that Return means is dark, like a key of the panel; the focus is a ring around any.
    const bool dark = kind == BS_DEFPUSHBUTTON && IsWindowEnabled();
    const COLORREF ground = dark ? (pressed_ ? RGB(35, 36, 39) : GetSysColor(COLOR_HIGHLIGHT))
                                 : (pressed_ ? RGB(205, 204, 198) : RGB(240, 240, 236));
    theme::DrawField(dc, all, ground, focused_);
    if (focused_) {
        CRect mark = all;
        mark.DeflateRect(1, 1);
        dc.FrameRect(mark, GetSysColor(COLOR_HOTLIGHT));
    }
    // Rounded, as the panel's keys are.
    for (const CPoint corner : {CPoint(all.left, all.top), CPoint(all.right - 1, all.top),
                                CPoint(all.left, all.bottom - 1), CPoint(all.right - 1, all.bottom - 1)}) {
        dc.FillSolidRect({corner.x, corner.y, corner.x + 1, corner.y + 1}, GetSysColor(COLOR_3DFACE));
    }
    CRect face = all;
    if (pressed_) face.OffsetRect(0, 1);
    theme::DrawLine(dc, face, text_, theme::Align::center, dark ? GetSysColor(COLOR_HIGHLIGHTTEXT) : text);
}

// --- CStatic
// ---------------------------------------------------------------------------------------------------------

bool CStatic::Create(const char* text, UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create({0, kCursorArrow, {false, GetSysColor(COLOR_3DFACE)}}, text, style | WS_DISABLED,
                        rect, parent, id);
}

LRESULT CStatic::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_PAINT) return CWnd::DefWindowProc(message, wParam, lParam);
    CPaintDC dc(this);
    SelectFont(dc, *this, ownFont_);
    const CRect all = dc.clientRect();
    const UINT align = GetStyle() & 3U;
    const theme::Align where = align == SS_CENTER  ? theme::Align::center
                               : align == SS_RIGHT ? theme::Align::right
                                                   : theme::Align::left;
    if (text_.str().find('\n') == std::string::npos) {
        theme::DrawLine(dc, all, text_, where, GetSysColor(COLOR_WINDOWTEXT));
    } else {
        theme::DrawLines(dc, all, text_, where, GetSysColor(COLOR_WINDOWTEXT));
    }
    return 0;
}

// --- CComboBox
// -------------------------------------------------------------------------------------------------------

bool CComboBox::Create(UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create(WindowClass{}, "", style, rect, parent, id);
}

int CComboBox::AddString(const char* text) {
    entries_.emplace_back(text);
    return GetCount() - 1;
}

void CComboBox::ResetContent() {
    entries_.clear();
    SetCurSel(-1);
}

int CComboBox::SetCurSel(int index) {
    selected_ = index >= 0 && index < GetCount() ? index : -1;
    text_ = selected_ >= 0 ? entries_[static_cast<std::size_t>(selected_)] : CString();
    Invalidate();
    return selected_;
}

int CComboBox::GetLBText(int index, CString& text) const {
    if (index < 0 || index >= GetCount()) return -1;
    text = entries_[static_cast<std::size_t>(index)];
    return text.GetLength();
}

void CComboBox::Choose(int index) {
    if (index < 0 || index >= GetCount() || index == selected_) return;
    SetCurSel(index);
    NotifyParent(CBN_SELCHANGE);
}

void CComboBox::Step(int direction) {
    if (GetCount() > 0) Choose(std::clamp(selected_ + direction, 0, GetCount() - 1));
}

void CComboBox::JumpTo(UINT character) {
    const auto lower = [](UINT c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
    for (int i = 1; i <= GetCount(); ++i) {
        const int at = (std::max(0, selected_) + i) % GetCount();
        if (lower(static_cast<unsigned char>(entries_[static_cast<std::size_t>(at)].GetAt(0))) ==
            lower(character)) {
            Choose(at);
            return;
        }
    }
}

void CComboBox::ShowDropDown(bool show) {
    if (show == dropped_ || !IsWindow()) return;
    if (!show) {
        PopupWnd::CloseFor(*this);
        return;
    }
    std::vector<CMenu::Item> items;
    items.reserve(entries_.size());
    for (const CString& entry : entries_)
        items.push_back(
            {items.size() == static_cast<std::size_t>(selected_) ? MF_CHECKED : MF_STRING, 0, entry});
    const std::weak_ptr<bool> alive = LifeToken();
    dropped_ = PopupWnd::Open(*this, {0, bounds().Height()}, bounds().Width(), bounds().Height(),
                              std::move(items), selected_, [this, alive](int index) {
                                  const auto lives = [&] {
                                      const std::shared_ptr<bool> token = alive.lock();
                                      return token != nullptr && *token && IsWindow();
                                  };
                                  if (!lives()) return;
                                  dropped_ = false;
                                  Invalidate();
                                  NotifyParent(CBN_CLOSEUP);
                                  if (lives()) Choose(index);
                              });
    Invalidate();
    if (dropped_) NotifyParent(CBN_DROPDOWN);
}

LRESULT CComboBox::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        focused_ = message == WM_SETFOCUS;
        Invalidate();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetFocus();
        ShowDropDown(true);
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
                ShowDropDown(true);
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
            ShowDropDown(true);
            break;
        default:
            break;
        }
        return 0;
    case WM_CHAR:
        if (wParam > 0x20 && (HIWORD(static_cast<std::uintptr_t>(lParam)) & kCharArrow) == 0)
            JumpTo(static_cast<UINT>(wParam));
        return 0;
    default:
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

void CComboBox::Paint() {
    CPaintDC dc(this);
    SelectFont(dc, *this, ownFont_);
    const CRect all = dc.clientRect();
    theme::DrawField(dc, all, GetSysColor(COLOR_WINDOW), focused_ || dropped_);
    const int arrow = GetSystemMetrics(SM_CXVSCROLL) + theme::kPadding;
    theme::DrawLine(dc, {theme::kPadding + 1, 1, all.right - arrow, all.bottom - 1}, text_,
                    theme::Align::left, GetSysColor(IsWindowEnabled() ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT));
    theme::DrawArrow(dc, {all.right - arrow, 0, all.right, all.bottom}, false, GetSysColor(COLOR_BTNTEXT));
}

} // namespace vocafade
