// SPDX-License-Identifier: MIT
// How presses, moves and releases find their windows.
#include "ui/desktop.h"
#include "ui/dialog.h"
#include "ui/popup.h"

#include <cstdlib>
#include <utility>

namespace vocafade {

CWnd* Desktop::HitTest(CWnd& top, CPoint point) {
    CWnd* at = &top;
    if (!CRect({0, 0}, top.bounds_.Size()).PtInRect(point)) return nullptr;
    for (;;) {
        CWnd* found = nullptr;
        for (auto it = at->children_.rbegin(); it != at->children_.rend() && found == nullptr; ++it)
            if (((*it)->style_ & WS_VISIBLE) != 0 && ((*it)->style_ & WS_DISABLED) == 0 &&
                (*it)->bounds_.PtInRect(point))
                found = *it;
        if (found == nullptr) return at;
        point = point - found->bounds_.TopLeft();
        at = found;
    }
}

void Desktop::SetCapture(CWnd* window) {
    if (capture_ == window) return;
    CWnd* before = std::exchange(capture_, window);
    if (before != nullptr) before->SendMessage(WM_CAPTURECHANGED);
}

void Desktop::LoseRelease() {
    if (!pressOpen_) return;
    pressOpen_ = false;
    SetCapture(nullptr);
}

void Desktop::CheckHeldButton() {
    // A window that is taken off the screen loses the held button, and nothing tells it.
    if (capture_ == nullptr || !pressOpen_ || display_->IsLeftButtonHeld()) return;
    platform::Event event;
    while (!closed_ && display_->NextEvent(event)) // a release just now is an event by now
        Handle(event);
    if (!closed_) LoseRelease();
}

bool Desktop::FollowsQuickly(const platform::Event& press) const {
    if (!lastPress_) return false;
    // The unsigned difference is right across the clock's wrap, too.
    return press.time - lastPress_->time <= display_->DoubleClickTime() &&
           std::abs(press.screenPoint.x - lastPress_->at.x) <= display_->DoubleClickDistance() &&
           std::abs(press.screenPoint.y - lastPress_->at.y) <= display_->DoubleClickDistance();
}

void Desktop::HandlePress(CWnd& top, const platform::Event& event) {
    if (IsBlocked(top)) {
        if (popup_ == nullptr && modal_.back()->root_ != nullptr && modal_.back()->root_->window != nullptr)
            modal_.back()->root_->window->Raise();
        return;
    }
    if (event.button != 1 && popup_.get() != &top) return;
    const bool quick = FollowsQuickly(event);
    // The first press of the double click has closed its window: the second is not for the one beneath.
    const bool stray = quick && lastPress_->top == nullptr;
    const bool again = quick && lastPress_->top == &top;
    lastPress_ = {stray ? nullptr : &top, event.screenPoint, event.time};
    if (stray) return;
    CWnd* target = capture_ != nullptr && RootOf(capture_) == &top ? capture_ : HitTest(top, event.point);
    if (popup_.get() == &top) target = &top;
    if (target == nullptr) return;
    if (event.button == 1) pressOpen_ = true;
    CPoint offset;
    RootOf(target, &offset);
    target->SendMessage(again ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN, 0, (event.point - offset).ToMessage());
}

void Desktop::HandleMouse(CWnd& top, const platform::Event& event) {
    using platform::EventType;
    const bool toPopup = popup_.get() == &top;
    const bool leftRelease = event.type == EventType::released && event.button == 1;
    const bool ofAPress = leftRelease ? std::exchange(pressOpen_, false) : pressOpen_;
    // What is left of a press that closed a menu or a dialog, or was none of ours, is for nobody.
    if ((leftRelease || (event.type == EventType::moved && event.leftButton)) && !ofAPress && !toPopup)
        return;
    CWnd* captured = capture_ != nullptr && RootOf(capture_) == &top ? capture_ : nullptr;
    if (IsBlocked(top) && captured == nullptr) return;
    CWnd* hit = HitTest(top, event.point);
    CWnd* target = toPopup ? &top : captured != nullptr ? captured : hit;
    if (target == nullptr) return;
    CPoint offset;
    RootOf(target, &offset);
    const CPoint point = event.point - offset;
    switch (event.type) {
    case EventType::released:
        if (event.button == 1 || toPopup) target->SendMessage(WM_LBUTTONUP, 0, point.ToMessage());
        break;
    case EventType::moved:
        if (top.root_->window != nullptr) top.root_->window->SetCursor(target->CursorAt(point));
        target->SendMessage(WM_MOUSEMOVE, 0, point.ToMessage());
        break;
    default: {
        constexpr int kNotch = 120;
        target->SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<unsigned>(event.value * kNotch)),
                            point.ToMessage());
        break;
    }
    }
}

} // namespace vocafade
