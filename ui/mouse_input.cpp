// SPDX-License-Identifier: MIT
#include "ui/mouse_input.h"

#include "ui/window_session.h"

#include <cstdlib>
#include <utility>

namespace vocafade {
namespace {

/// Of the wheel in one event; what claims more than that is no wheel.
constexpr int kMostTurn = 100 * WHEEL_DELTA;

} // namespace

void MouseInput::SetCapture(CWnd* window) {
    if (capture_ == window) return;
    CWnd* before = std::exchange(capture_, window);
    if (before != nullptr) before->SendMessage(WM_CAPTURECHANGED);
}

void MouseInput::Forget(const CWnd& window) {
    if (capture_ == &window) {
        capture_ = nullptr;
        pressOpen_ = false;
    }
    if (lastPress_ && lastPress_->window == &window) lastPress_->window = nullptr;
    if (wheelTarget_ == &window) wheelTarget_ = nullptr;
}

void MouseInput::DropPress() {
    if (capture_ == nullptr) pressOpen_ = false;
}

void MouseInput::LoseRelease() {
    if (!pressOpen_) return;
    pressOpen_ = false;
    SetCapture(nullptr);
}

void MouseInput::LookForLostRelease(const platform::Event& event) {
    using platform::EventType;
    // A button that is pressed again, or is not held while the mouse moves, was released unseen.
    if (event.type == EventType::pressed ? event.button == 1
                                         : event.type == EventType::moved && !event.leftButton)
        LoseRelease();
}

void MouseInput::CheckHeldButton() {
    // A window that is taken off the screen loses the held button, and nothing tells it.
    if (capture_ == nullptr || !pressOpen_ || session_.display()->IsLeftButtonHeld()) return;
    session_.HandleEvents(); // a release just now is an event by now
    if (!session_.IsClosed()) LoseRelease();
}

bool MouseInput::FollowsQuickly(const platform::Event& press) const {
    if (!lastPress_) return false;
    const platform::Display& display = *session_.display();
    // The unsigned difference is right across the clock's wrap, too.
    return press.time - lastPress_->time <= display.DoubleClickTime() &&
           std::abs(press.screenPoint.x - lastPress_->at.x) <= display.DoubleClickDistance() &&
           std::abs(press.screenPoint.y - lastPress_->at.y) <= display.DoubleClickDistance();
}

CWnd* MouseInput::CaptureIn(const TopLevel& top) const {
    return capture_ != nullptr && capture_->FindTopLevel() == &top ? capture_ : nullptr;
}

void MouseInput::Press(TopLevel& top, const platform::Event& event) {
    if (session_.IsBlocked(top)) {
        session_.RaiseDialog();
        return;
    }
    const bool toPopup = session_.IsPopup(top);
    if (event.button == 2 && !toPopup) PressMiddle(top, event.point);
    if (event.button != 1 && !toPopup) return;
    const bool quick = FollowsQuickly(event);
    // The first press of a double click may have closed its window. The window behind does not get the second
    // press.
    const bool stray = quick && lastPress_->window == nullptr;
    const bool again = quick && lastPress_->window == &top.window();
    lastPress_ = {stray ? nullptr : &top.window(), event.screenPoint, event.time};
    if (stray) return;
    CWnd* target = CaptureIn(top);
    if (target == nullptr) target = top.window().WindowAt(event.point);
    if (toPopup) target = &top.window();
    if (target == nullptr) return;
    if (event.button == 1) pressOpen_ = true;
    CPoint offset;
    target->FindTopLevel(&offset);
    target->SendMessage(again ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN, 0, (event.point - offset).ToMessage());
}

void MouseInput::PressMiddle(const TopLevel& top, CPoint point) {
    CWnd* target = capture_ == nullptr ? top.window().WindowAt(point) : nullptr;
    if (target == nullptr) return;
    CPoint offset;
    target->FindTopLevel(&offset);
    target->SendMessage(WM_MBUTTONDOWN, 0, (point - offset).ToMessage());
}

void MouseInput::Handle(TopLevel& top, const platform::Event& event) {
    using platform::EventType;
    const bool toPopup = session_.IsPopup(top);
    const bool leftRelease = event.type == EventType::released && event.button == 1;
    const bool ofAPress = leftRelease ? std::exchange(pressOpen_, false) : pressOpen_;
    // Moves and the release of a press that closed a menu or a dialog, or that no window had, are dropped.
    if ((leftRelease || (event.type == EventType::moved && event.leftButton)) && !ofAPress && !toPopup)
        return;
    CWnd* captured = CaptureIn(top);
    if (session_.IsBlocked(top) && captured == nullptr) return;
    CWnd* target = toPopup               ? &top.window()
                   : captured != nullptr ? captured
                                         : top.window().WindowAt(event.point);
    if (target == nullptr) return;
    CPoint offset;
    target->FindTopLevel(&offset);
    const CPoint point = event.point - offset;
    switch (event.type) {
    case EventType::released:
        if (event.button == 1 || toPopup) target->SendMessage(WM_LBUTTONUP, 0, point.ToMessage());
        break;
    case EventType::moved:
        if (top.native() != nullptr) top.native()->SetCursor(target->CursorAt(point));
        target->SendMessage(WM_MOUSEMOVE, 0, point.ToMessage());
        break;
    default:
        TurnWheel(*target, event.value, point);
        break;
    }
}

void MouseInput::TurnWheel(CWnd& target, int value, CPoint point) {
    // Fine turns add up to notches, but not across windows or against each other.
    if (wheelTarget_ != &target || (wheelRest_ > 0) != (value > 0)) wheelRest_ = 0;
    wheelTarget_ = &target;
    wheelRest_ += std::clamp(value, -kMostTurn, kMostTurn);
    const int notches = wheelRest_ / WHEEL_DELTA;
    wheelRest_ %= WHEEL_DELTA;
    if (notches != 0)
        target.SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<unsigned>(notches * WHEEL_DELTA)),
                           point.ToMessage());
}

} // namespace vocafade
