// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"

#include <optional>

namespace vocafade {

class CWnd;
class TopLevel;
class WindowSession;

/// How presses, moves and releases find their windows, and who has captured the mouse.
class MouseInput {
  public:
    explicit MouseInput(WindowSession& session) : session_(session) {}

    void Press(TopLevel& top, const platform::Event& event);
    /// A release, a move or the wheel.
    void Handle(TopLevel& top, const platform::Event& event);
    /// Before every event: notices a release that was not seen.
    void LookForLostRelease(const platform::Event& event);
    /// At the end of the events: the same, where no event tells.
    void CheckHeldButton();

    CWnd* capture() const { return capture_; }
    void SetCapture(CWnd* window);
    /// The window is going.
    void Forget(const CWnd& window);
    /// A press that is held now was for what goes away, unless somebody has captured it.
    void DropPress();

  private:
    struct LastPress {
        const CWnd* window = nullptr; ///< the top-level one; null once it has gone
        CPoint at;                    ///< on the screen
        std::uint32_t time = 0;
    };
    /// The press before this one was near it in time and place.
    bool FollowsQuickly(const platform::Event& press) const;
    /// Who has captured the mouse, if it is inside `top`.
    CWnd* CaptureIn(const TopLevel& top) const;
    /// The middle button does one thing at once and holds nothing; during a drag it does nothing.
    void PressMiddle(const TopLevel& top, CPoint point);
    /// Sends whole notches as WM_MOUSEWHEEL and keeps the rest.
    void TurnWheel(CWnd& target, int value, CPoint point);
    /// Ends what the last press began, if its release has not come and cannot come any more.
    void LoseRelease();

    WindowSession& session_;
    CWnd* capture_ = nullptr;
    std::optional<LastPress> lastPress_; ///< for double clicks
    const CWnd* wheelTarget_ = nullptr;  ///< that `wheelRest_` was turned over
    int wheelRest_ = 0;                  ///< less than a notch
    bool pressOpen_ = false; ///< a window has had the left button's press, and is to have its release
};

} // namespace vocafade
