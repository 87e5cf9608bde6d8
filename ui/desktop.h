// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"
#include "ui/wnd.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vocafade {

class CDialog;
class CFrameWnd;
class PopupWnd;

/// What a window with a native one of its own has beside the others.
struct NativeRoot {
    std::unique_ptr<platform::Window> window;
    platform::WindowKind kind = platform::WindowKind::embedded;
    std::shared_ptr<Canvas> canvas; ///< everything that its windows have drawn
    CWnd* focus = nullptr;          ///< who gets the keys when the native window has them
    bool focusTold = false;         ///< `focus` has had WM_SETFOCUS
    CWnd* owner = nullptr;
};

/// Everything that the windows of one editor share: the connection to the display, the queue, the pump, and
/// who has the mouse. One per attached frame; nothing of it is shared between editors.
///
/// All functions are for the thread that pumps, but for `Post`.
class Desktop : public std::enable_shared_from_this<Desktop> {
  public:
    /// Connects, and looks the host's window up; null when either fails.
    static std::shared_ptr<Desktop> Open(std::uintptr_t host, CFrameWnd& frame, CSize& size);
    /// The one whose message is being handled on this thread, else the one opened last on it; null when there
    /// is none.
    static Desktop* Current();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Destroys all windows and disconnects.
    void Close();
    void Idle();
    bool IsDisplayAlive() const { return display_ != nullptr && display_->IsAlive(); }
    bool IsClosed() const { return closed_; }
    CFrameWnd& frame() const { return frame_; }
    platform::Display* display() const { return display_.get(); }

    /// @name For windows
    /// @{
    bool MakeNative(CWnd& window, platform::WindowKind kind, CWnd* owner, const CRect& bounds,
                    const char* title);
    /// The window is going: everything that refers to it is forgotten, what it owns is closed.
    void Forget(CWnd& window);
    /// The window above with a native one; `offset` becomes the place of `window` in it. Null without one.
    static CWnd* RootOf(const CWnd* window, CPoint* offset = nullptr);
    /// The native window of a window that has one; null when it could not be made.
    static platform::Window* NativeOf(const CWnd& top) { return top.root_->window.get(); }
    /// The part of the window that nothing covers, in root coordinates.
    static CRgn VisiblePart(const CWnd& window);
    void Paint(CWnd& window);
    void PresentAll();
    /// Presents unless the pump is about to do so anyway.
    void PresentSoon();
    void SetFocus(CWnd* root, CWnd* window);
    CWnd* capture() const { return capture_; }
    void SetCapture(CWnd* window);
    void AddTimer(CWnd& window);
    short KeyState(int key) const;
    /// @}

    /// @name The queue
    /// @{
    /// [any-thread] `message` is sent at the next idle, if the target lives; without a target only
    /// WM_DEFERRED_CREATE does something.
    void Post(CWnd* target, std::weak_ptr<bool> alive, UINT message, WPARAM wParam, LPARAM lParam);
    void PostAction(std::weak_ptr<bool> alive, std::function<void()> action);
    /// Runs `create` for a WM_DEFERRED_CREATE of its own.
    void DeferCreate(std::weak_ptr<bool> alive, std::function<void()> create);
    /// @}

    /// @name Menus and dialogs
    /// @{
    void OpenPopup(std::unique_ptr<PopupWnd> popup);
    /// Takes the popup away; it lives on until the pump is outside of all handlers.
    void ClosePopup();
    PopupWnd* popup() const { return popup_.get(); }
    void PushModal(CDialog& dialog) { modal_.push_back(&dialog); }
    void RemoveModal(CDialog& dialog);
    /// The editor's own window, which dialogs belong to that name no parent; null without one.
    CWnd* MainWindow() const;
    /// Keeps `object` until the pump is outside of all handlers.
    void Bury(std::unique_ptr<CWnd> object);
    void Adopt(std::unique_ptr<CDialog> dialog);
    void Disown(CDialog& dialog);
    /// @}

    /// Makes a desktop the current one for the life of this object.
    class Scope {
      public:
        explicit Scope(Desktop& desktop);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

      private:
        Desktop* before_;
    };

  private:
    struct Posted {
        CWnd* target = nullptr;
        std::weak_ptr<bool> alive;
        UINT message = 0;
        WPARAM wParam = 0;
        LPARAM lParam = 0;
        std::function<void()> action;
    };

    Desktop(std::unique_ptr<platform::Display> display, CFrameWnd& frame, std::uintptr_t host);
    void Handle(const platform::Event& event);
    void HandlePress(CWnd& top, const platform::Event& event);
    void HandleMouse(CWnd& top, const platform::Event& event);
    /// The press before this one was near it in time and place.
    bool FollowsQuickly(const platform::Event& press) const;
    /// Ends what the last press began, if its release has not come and cannot come any more.
    void LoseRelease();
    void CheckHeldButton();
    void HandleKey(CWnd& top, const platform::Event& event);
    void HandleFocus(CWnd& top, bool gained);
    void HandleDestroyed(CWnd& top);
    void SendKey(CWnd& top, UINT message, WPARAM wParam, LPARAM lParam);
    void TellFocus(CWnd& top, bool gained, CWnd* other);
    bool IsBlocked(const CWnd& top) const;
    CWnd* TopOf(const platform::Window* window) const;
    static CWnd* HitTest(CWnd& top, CPoint point);
    void RunTimers();
    void RunQueue();
    void PaintAll();
    void PaintTree(CWnd& window);
    void CloseOwnedBy(const CWnd& window);

    std::unique_ptr<platform::Display> display_;
    CFrameWnd& frame_;
    std::uintptr_t host_;
    std::thread::id thread_;
    bool closed_ = false;
    int depth_ = 0; ///< of idles within idles
    bool painting_ = false;
    std::vector<CWnd*> tops_; ///< windows with native ones, in the order of creation
    std::vector<CWnd*> timers_;
    CWnd* capture_ = nullptr;
    /// The last press, for double clicks.
    struct Press {
        const CWnd* top = nullptr; ///< null once it has gone
        CPoint at;                 ///< on the screen
        std::uint32_t time = 0;
    };
    std::optional<Press> lastPress_;
    bool pressOpen_ = false; ///< a window has had the left button's press, and is to have its release
    bool shift_ = false;
    bool control_ = false;
    bool alt_ = false;
    bool leftButton_ = false;

    std::mutex queueLock_;
    std::vector<Posted> queue_;
    std::vector<Posted> creations_;

    std::unique_ptr<PopupWnd> popup_;
    std::vector<CDialog*> modal_; ///< open ones, the last on top
    std::vector<std::unique_ptr<CDialog>> adopted_;
    std::vector<std::unique_ptr<CWnd>> buried_;
};

} // namespace vocafade
