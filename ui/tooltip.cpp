// SPDX-License-Identifier: MIT
#include "ui/tooltip.h"

#include "ui/theme.h"
#include "ui/window_session.h"

namespace vocafade {
namespace {

constexpr std::chrono::milliseconds kRest{700};
constexpr int kBelowPointer = 20; ///< so that the pointer hides nothing of it
constexpr int kAbovePointer = 6;
constexpr int kBorder = 1;

} // namespace

CSize TooltipWnd::SizeOfText() const {
    CDC measure;
    measure.SelectObject(&FontInUse());
    CSize size = theme::MeasureLines(measure, text_);
    size.cx += 2 * (kBorder + theme::kPadding);
    size.cy += 2 * (kBorder + theme::kPadding);
    return size;
}

bool TooltipWnd::Open(WindowSession& session, CWnd& owner, CPoint pointer, const CString& text) {
    CPoint offset;
    const TopLevel* top = owner.FindTopLevel(&offset);
    if (top == nullptr || top->native() == nullptr) return false;
    owner_ = &owner;
    text_ = text;
    const WindowSession::Scope scope(session);
    const CPoint at = top->native()->ScreenPosition() + offset + pointer;
    const CRect area = session.display()->WorkArea(at);
    CRect bounds(at + CPoint(0, kBelowPointer), SizeOfText());
    if (bounds.bottom > area.bottom) bounds.OffsetRect(0, at.y - kAbovePointer - bounds.bottom);
    bounds.MoveInside(area);
    const auto kind = platform::WindowKind::tooltip;
    return CreateIn(session, nullptr, &kind, &owner, WindowClass{}, text, WS_POPUP | WS_VISIBLE, bounds, 0);
}

void TooltipWnd::TextChanged() {
    SetBounds({bounds().TopLeft(), SizeOfText()});
    Invalidate();
}

LRESULT TooltipWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_PAINT) return Control::DefWindowProc(message, wParam, lParam);
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    CRect all = dc.clientRect();
    theme::DrawField(dc, all, theme::kField, false);
    all.DeflateRect(kBorder + theme::kPadding, kBorder + theme::kPadding);
    theme::DrawLines(dc, all, text_, theme::kText);
    return 0;
}

void Tooltips::Cancel() {
    rest_.reset();
    if (window_ == nullptr) return;
    window_->DestroyWindow();
    window_.reset();
}

void Tooltips::Forget(const CWnd& window) {
    if (window_ != nullptr && window.IsOrHolds(window_->owner())) Cancel();
}

CWnd* Tooltips::Target(CPoint& point) const {
    const TopLevel* top = rest_ ? session_.TopLevelOf(rest_->native) : nullptr;
    if (top == nullptr || session_.IsBlocked(*top) || session_.mouse().capture() != nullptr) return nullptr;
    CWnd* target = top->window().WindowAt(rest_->at);
    if (target == nullptr) return nullptr;
    CPoint offset;
    target->FindTopLevel(&offset);
    point = rest_->at - offset;
    return target;
}

void Tooltips::Handle(const platform::Event& event) {
    using platform::EventType;
    switch (event.type) {
    case EventType::moved: {
        if (event.leftButton) {
            Cancel();
            return;
        }
        const bool shown = window_ != nullptr;
        rest_ = Rest{event.window, event.point, Clock::now()};
        if (!shown) return;
        CPoint point;
        const CWnd* target = Target(point);
        if (target != window_->owner() || !about_.PtInRect(point)) {
            Cancel();
            rest_ = Rest{event.window, event.point, Clock::now()};
        }
        return;
    }
    case EventType::pressed:
    case EventType::wheel:
    case EventType::keyPressed:
    case EventType::left:
    case EventType::focusLost:
        Cancel();
        return;
    default:
        return;
    }
}

void Tooltips::Idle() {
    if (!rest_ || (window_ == nullptr && Clock::now() - rest_->since < kRest)) return;
    CPoint point;
    CWnd* target = Target(point);
    CRect about;
    const CString text = target != nullptr ? target->TooltipAt(point, about) : CString();
    if (text.IsEmpty()) {
        Cancel();
    } else if (window_ != nullptr) {
        window_->SetWindowText(text); // what it says may have changed
    } else {
        about_ = about;
        window_ = std::make_unique<TooltipWnd>();
        if (!window_->Open(session_, *target, point, text)) Cancel();
    }
}

} // namespace vocafade
