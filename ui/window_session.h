// SPDX-License-Identifier: MIT
#pragma once

#include "ui/key_input.h"
#include "ui/message_queue.h"
#include "ui/mouse_input.h"
#include "ui/painter.h"
#include "ui/platform/platform.h"
#include "ui/tooltip.h"
#include "ui/top_level.h"
#include "ui/wnd.h"

#include <memory>
#include <vector>

namespace vocafade {

class CDialog;
class CFrameWnd;
class PopupWnd;

/// What the windows of one editor share, from the opening to the closing: the connection to the display, the
/// queue, the pump, and what is open. One for each attached frame; editors share nothing.
///
/// Every operation is [main-thread], but for those of the queue.
class WindowSession : public std::enable_shared_from_this<WindowSession> {
  public:
    /// Connects, and looks the host's window up; null when either fails.
    static std::shared_ptr<WindowSession> Open(std::uintptr_t host, CFrameWnd& frame, double scale,
                                               CSize& size);
    /// The one whose message is being handled on this thread, else the one opened last on it; null when there
    /// is none.
    static WindowSession* Current();
    ~WindowSession(); // NOLINT(bugprone-exception-escape): lack of memory in a handler
    WindowSession(const WindowSession&) = delete;
    WindowSession& operator=(const WindowSession&) = delete;

    /// Destroys all windows and disconnects.
    void Close();
    bool IsClosed() const { return closed_; }
    /// Handles what has happened, paints and presents.
    void Idle();
    bool IsIdling() const { return idles_ > 0; }
    /// Handles the events that have arrived.
    void HandleEvents();

    bool IsDisplayAlive() const { return display_ != nullptr && display_->IsAlive(); }
    /// Device pixels for each logical one.
    double scale() const { return scale_; }
    /// Draws all windows at another scale from now on.
    void SetScale(double scale);
    platform::Display* display() const { return display_.get(); }
    CFrameWnd& frame() const { return frame_; }
    MessageQueue& queue() { return queue_; }
    Painter& painter() { return painter_; }
    MouseInput& mouse() { return mouse_; }
    const KeyInput& keys() const { return keys_; }

    /// @name Windows
    /// @{
    /// Makes the native window of `window`; null when that fails.
    std::shared_ptr<TopLevel> MakeTopLevel(CWnd& window, platform::WindowKind kind, CWnd* owner,
                                           const CRect& bounds, const char* title);
    /// In the order of their creation.
    const std::vector<TopLevel*>& topLevels() const { return topLevels_; }
    /// The editor's own window, to which dialogs belong that name no parent; null without one.
    TopLevel* MainWindow() const;
    /// The one with that native window; null when there is none.
    TopLevel* TopLevelOf(const platform::Window* native) const;
    /// `window` has a timer, whose ticks are to be fetched.
    void AddTimer(CWnd& window);
    /// The window is going: everything that refers to it is forgotten, what it owns is closed.
    void Forget(CWnd& window);
    /// @}

    /// @name Menus and dialogs
    /// @{
    void OpenPopup(std::unique_ptr<PopupWnd> popup);
    /// Takes the popup away; it lives on until the pump is outside of all handlers.
    void ClosePopup();
    PopupWnd* popup() const { return popup_.get(); }
    bool IsPopup(const TopLevel& top) const;
    void PushModal(CDialog& dialog) { modal_.push_back(&dialog); }
    void RemoveModal(CDialog& dialog);
    /// A menu, or a dialog above it, keeps the window from all input.
    bool IsBlocked(const TopLevel& top) const;
    /// Brings the dialog that blocks to the front.
    void RaiseDialog();
    /// Owns `dialog` until it is closed.
    void Adopt(std::unique_ptr<CDialog> dialog);
    void Disown(CDialog& dialog);
    /// @}

    /// Makes a session the current one for the life of this object.
    class Scope {
      public:
        explicit Scope(WindowSession& session);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

      private:
        WindowSession* before_;
    };

  private:
    WindowSession(std::unique_ptr<platform::Display> display, CFrameWnd& frame, std::uintptr_t host,
                  double scale);
    void Handle(const platform::Event& event);
    void HandleDestroyed(TopLevel& top);
    void CloseOwnedBy(const CWnd& window);
    void SendTimerTicks();
    /// Keeps `object` until the pump is outside of all handlers.
    void Bury(std::unique_ptr<CWnd> object);

    std::unique_ptr<platform::Display> display_;
    CFrameWnd& frame_;
    std::uintptr_t host_;
    double scale_;
    bool closed_ = false;
    int idles_ = 0; ///< under way, one inside the other
    MessageQueue queue_;
    Painter painter_{*this};
    MouseInput mouse_{*this};
    Tooltips tooltips_{*this};
    KeyInput keys_;

    std::vector<TopLevel*> topLevels_;
    std::vector<CWnd*> timers_;
    std::unique_ptr<PopupWnd> popup_;
    std::vector<CDialog*> modal_; ///< open ones, the last on top
    std::vector<std::unique_ptr<CDialog>> adopted_;
    std::vector<std::unique_ptr<CWnd>> buried_;
};

} // namespace vocafade
