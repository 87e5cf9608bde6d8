// SPDX-License-Identifier: MIT
#include "ui/spin_button.h"

#include "ui/theme.h"

#include <cstdlib>
#include <utility>

namespace vocafade {
namespace {

constexpr UINT kTickMilliseconds = 50;
constexpr int kTicksBeforeRepeat = 8;
constexpr int kRepeatsBeforeTens = 30; ///< a second and a half
constexpr int kRepeatsBeforeHundreds = 70;
constexpr int kPageSteps = 10;

} // namespace

CSpinButtonCtrl::~CSpinButtonCtrl() { SetBuddy(nullptr); }

bool CSpinButtonCtrl::Create(UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create(WindowClass{}, "", style, rect, parent, id);
}

void CSpinButtonCtrl::SetRange32(int lower, int upper) {
    lower_ = std::min(lower, upper);
    upper_ = std::max(lower, upper);
    position_ = std::clamp(position_, lower_, upper_);
}

int CSpinButtonCtrl::SetPos(int position) {
    return std::exchange(position_, std::clamp(position, lower_, upper_));
}

int CSpinButtonCtrl::SetBase(int /*base*/) { return 10; }

CEdit* CSpinButtonCtrl::SetBuddy(CEdit* buddy) {
    CEdit* before = std::exchange(buddy_, buddy);
    if (before != nullptr) before->SetSpin(nullptr);
    if (buddy != nullptr) buddy->SetSpin(this);
    return before;
}

void CSpinButtonCtrl::SetSteps(int step, int growth) {
    step_ = std::max(1, step);
    growth_ = growth;
    KeyUp();
}

int CSpinButtonCtrl::Grown(int repeats) const {
    return std::min(growth_, repeats > kRepeatsBeforeHundreds ? 100 : repeats > kRepeatsBeforeTens ? 10 : 1);
}

bool CSpinButtonCtrl::KeyDown(UINT key) {
    const bool page = key == kKeyPageUp || key == kKeyPageDown;
    if ((GetStyle() & UDS_ARROWKEYS) == 0 || (!page && key != kKeyUp && key != kKeyDown)) return false;
    keyRepeats_ = key == key_ ? keyRepeats_ + 1 : 1;
    key_ = key;
    const int direction = key == kKeyUp || key == kKeyPageUp ? 1 : -1;
    Turn(direction * (page ? kPageSteps : Grown(keyRepeats_)));
    return true;
}

void CSpinButtonCtrl::Turn(int steps) { Move(steps * (GetKeyState(VK_SHIFT) < 0 ? 1 : step_)); }

void CSpinButtonCtrl::Move(int by) {
    std::int64_t at = position_;
    if (buddy_ != nullptr) at = std::strtoll(buddy_->GetTextForSpin(), nullptr, 10);
    at = std::clamp<std::int64_t>(at, lower_, upper_) + by;
    position_ = static_cast<int>(std::clamp<std::int64_t>(at, lower_, upper_));
    if (buddy_ == nullptr) return;
    CString text;
    text.Format("%d", position_);
    buddy_->SetTextForSpin(text);
    buddy_->NotifySpinButton();
}

void CSpinButtonCtrl::Press(CPoint point) {
    pressed_ = point.y < bounds().Height() / 2 ? 1 : -1;
    ticks_ = 0;
    SetCapture();
    SetTimer(1, kTickMilliseconds);
    Invalidate();
    Turn(pressed_);
}

void CSpinButtonCtrl::Release() {
    if (pressed_ == 0) return;
    pressed_ = 0;
    KillTimer(1);
    ReleaseCapture();
    Invalidate();
}

LRESULT CSpinButtonCtrl::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        Press(CPoint::FromMessage(lParam));
        return 0;
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
        Release();
        return 0;
    case WM_SHOWWINDOW:
        if (wParam == 0) Release();
        return 0;
    case WM_TIMER:
        ++ticks_;
        if (!IsWindowVisible()) {
            Release();
        } else if (pressed_ != 0 && ticks_ > kTicksBeforeRepeat) {
            Turn(pressed_ * Grown(ticks_ - kTicksBeforeRepeat));
        }
        return 0;
    case WM_MOUSEWHEEL:
        Turn(static_cast<std::int16_t>(HIWORD(wParam)) / WHEEL_DELTA);
        return 0;
    default:
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

void CSpinButtonCtrl::Paint() {
    CPaintDC dc(this);
    const CRect all = dc.clientRect();
    const int middle = all.Height() / 2;
    const CRect halves[] = {{0, 0, all.right, middle}, {0, middle, all.right, all.bottom}};
    for (const int up : {1, 0}) {
        const CRect& half = halves[up == 1 ? 0 : 1];
        const bool down = pressed_ == (up == 1 ? 1 : -1);
        theme::DrawField(dc, half, down ? theme::kEdge : theme::kFace, false);
        theme::DrawArrow(dc, half, up == 1, theme::kText);
    }
}

} // namespace vocafade
