// SPDX-License-Identifier: MIT
#pragma once

#include "ui/wnd.h"

namespace vocafade {

/// The window that a host gives to the editor, as a parent for the editor's own.
///
/// How the editor's shell uses it:
///
///     open(ptr):  frame.AttachHost(ptr);            // false: no display; the editor stays closed
///                 panel->Create(..., &frame, 0);    // native child of the host's window
///     idle():     panel->idle(); frame.Idle();      // what the panel drew shows at once
///     close():    panel->DestroyWindow(); delete panel; frame.DetachHost();
///
/// Each attached frame has a connection to the display of its own, so that several editors, even of copies of
/// the plug-in on threads of their own, share nothing, and one that loses its display takes no other with it.
class CFrameWnd : public CWnd {
  public:
    CFrameWnd();
    /// Detaches first.
    ~CFrameWnd() override;

    /// [main-thread] Takes the host's native window (an X11 window id in the pointer's bits) as this window
    /// and its size as the bounds, in logical pixels of `scale` (above 0), as everything in it. False when
    /// there is no display or no such window; nothing is attached then.
    bool AttachHost(void* nativeWindow, double scale = 1.0);
    /// [main-thread] Destroys all windows under this one, dialogs and menus included, and closes the
    /// connection to the display. What the host did to its own window before does not matter.
    void DetachHost();
    /// [main-thread] Draws everything at `scale` from now on, in windows of the device size that this takes. An
    /// open menu is closed. The host's window is the host's to resize.
    void SetScale(double scale);
    /// [main-thread] How large the desktop wants things drawn; 0 when it does not say, or there is none. While
    /// detached this connects to the display for the question.
    double DesktopScale() const;
    bool IsAttached() const { return owned_ != nullptr; }
    /// [main-thread] Delivers what has happened since the last call (input, timers, posted messages) and
    /// paints what is invalid. Never waits. After the display has gone away timers and messages still come.
    void Idle();
    /// [main-thread] False once the display has gone away.
    bool IsDisplayAlive() const;

    bool DestroyWindow() override;
    const char* ClassName() const override { return "CFrameWnd"; }

  private:
    std::shared_ptr<WindowSession> owned_;
};

} // namespace vocafade
