// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade {

class CWnd;
class WindowSession;

/// Paints the windows of a session where they are invalid, and puts onto the screen what was drawn.
class Painter {
  public:
    explicit Painter(WindowSession& session) : session_(session) {}

    /// Sends WM_ERASEBKGND and WM_PAINT to all windows that are invalid, outer ones first. Does nothing
    /// inside of a WM_PAINT.
    void PaintAll();
    void PresentAll();
    /// Presents what was drawn outside of an idle; an idle presents at its end.
    void PresentOutsideIdle();

  private:
    void PaintWithChildren(CWnd& window);

    WindowSession& session_;
    bool painting_ = false;
};

} // namespace vocafade
