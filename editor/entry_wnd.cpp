// SPDX-License-Identifier: MIT
#include "editor/entry_wnd.h"

#include <algorithm>
#include <utility>

namespace vocafade {
namespace {

constexpr UINT kEditStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_RIGHT;
constexpr UINT kSpinStyle = UDS_NOTHOUSANDS | UDS_ARROWKEYS | UDS_ALIGNRIGHT | UDS_SETBUDDYINT;

constexpr UINT kKeepOrder = SWP_NOZORDER | SWP_NOACTIVATE;

} // namespace

// clang-format off
BEGIN_MESSAGE_MAP(CKVBEntryWnd, CWnd)
ON_WM_CREATE()
ON_WM_PAINT()
ON_MESSAGE(kEntryConfirmed, OnReturn)
ON_MESSAGE(kEntryCancelled, OnEscape)
ON_MESSAGE(kEntryTabbed, OnTab)
END_MESSAGE_MAP()
// clang-format on

CKVBEntryWnd::CKVBEntryWnd(std::unique_ptr<CFormatEdit> field) : edit_(std::move(field)) {}

CKVBEntryWnd::~CKVBEntryWnd() { DestroyWindow(); }

bool CKVBEntryWnd::MakeWindow(CWnd* parent, CWnd* notifyWnd, const char* windowName,
                              const CWindowAttr* attributes, int width, CFont* font, bool withSign) {
    notifyWnd_ = notifyWnd;
    maxChars_ = width + 1;
    signed_ = withSign;
    font_ = font;
    CDC screen;
    screen.CreateDC("DISPLAY");
    screen.SelectObject(font);
    const CSize character = screen.GetTextExtent("0");
    charWidth_ = character.cx;
    charHeight_ = character.cy;
    spinWidth_ = GetSystemMetrics(SM_CXHSCROLL);
    const CWindowAttr at = attributes != nullptr ? *attributes : CWindowAttr{};
    return Create(AfxRegisterWndClass(CS_DBLCLKS, LoadCursor(0, kCursorArrow), GetStockObject(LTGRAY_BRUSH)),
                  windowName, WS_CHILD | WS_CLIPSIBLINGS, CRect({at.x, at.y}, {at.width, at.height}), parent,
                  0);
}

void CKVBEntryWnd::ComputeSize() {
    height_ = charHeight_ + charHeight_ / 2;
    width_ = spinWidth_ + maxChars_ * charWidth_ + 2 * GetSystemMetrics(SM_CXEDGE);
}

int CKVBEntryWnd::OnCreate() {
    if (CWnd::OnCreate() == -1) return -1;
    ComputeSize();
    SetWindowPos(nullptr, 0, 0, width_, height_, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    if (!edit_->Create(kEditStyle, {0, 0, width_ - spinWidth_, height_}, this, kEditId)) return -1;
    edit_->SetSingnFlag(signed_);
    edit_->SetLimitText(maxChars_);
    edit_->SetFont(font_);
    edit_->ShowWindow(SW_SHOW);
    if (!spin_.Create(kSpinStyle, {width_ - spinWidth_, 0, width_, height_}, this, kSpinId)) return -1;
    spin_.SetBase(10);
    spin_.SetBuddy(edit_.get());
    spin_.ShowWindow(SW_SHOW);
    ShowWindow(SW_HIDE);
    return 0;
}

void CKVBEntryWnd::OnPaint() {
    const CPaintDC begunAndEnded(this); // the children cover everything
}

void CKVBEntryWnd::SetNewValue(int value, int minimum, int maximum) {
    spin_.SetRange32(minimum, maximum);
    spin_.SetPos(value);
    edit_->SetFocus();
    CString text;
    text.Format("%d", value);
    edit_->SetWindowText(text);
}

void CKVBEntryWnd::SetSingnFlag(bool withSign) {
    signed_ = withSign;
    edit_->SetSingnFlag(withSign);
}

void CKVBEntryWnd::ChangeSize(int width, bool withSign) {
    SetSingnFlag(withSign);
    maxChars_ = width + 1;
    ComputeSize();
    SetWindowPos(nullptr, 0, 0, width_, height_, SWP_NOMOVE | kKeepOrder);
    PlaceParts();
    edit_->SetLimitText(maxChars_);
}

void CKVBEntryWnd::Cover(const CRect& frame) {
    width_ = std::max(width_, frame.Width());
    height_ = std::max(height_, frame.Height());
    SetWindowPos(nullptr, frame.left, frame.top, width_, height_, kKeepOrder);
    PlaceParts();
}

void CKVBEntryWnd::PlaceParts() {
    edit_->SetWindowPos(nullptr, 0, 0, width_ - spinWidth_, height_, kKeepOrder);
    spin_.SetWindowPos(nullptr, width_ - spinWidth_, 0, spinWidth_, height_, kKeepOrder);
}

LRESULT CKVBEntryWnd::OnReturn(WPARAM, LPARAM) {
    if (notifyWnd_ != nullptr) notifyWnd_->SendMessage(kEntryConfirmed);
    ShowWindow(SW_HIDE);
    return 0;
}

LRESULT CKVBEntryWnd::OnEscape(WPARAM, LPARAM) {
    if (notifyWnd_ != nullptr) notifyWnd_->SendMessage(kEntryCancelled);
    ShowWindow(SW_HIDE);
    if (GetParent() != nullptr) GetParent()->SetFocus();
    return 0;
}

LRESULT CKVBEntryWnd::OnTab(WPARAM, LPARAM direction) {
    if (notifyWnd_ != nullptr) notifyWnd_->SendMessage(kEntryTabbed, 0, direction);
    return 0;
}

} // namespace vocafade
