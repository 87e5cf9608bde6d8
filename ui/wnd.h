// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"
#include "ui/dc.h"
#include "ui/message_map.h"

#include <functional>
#include <memory>
#include <vector>

namespace vocafade {

class TimerThread;
class TopLevel;
class WindowSession;
namespace platform {
enum class WindowKind;
}

/// The pointer's look, by its number (kCursorArrow and the rest).
using HCURSOR = UINT;
/// The ground of a window class: nothing, or one colour.
struct HBRUSH {
    bool isNull = true;
    COLORREF color = 0;
};

/// What windows of one kind have in common. A value: there is no table of classes that instances could share.
struct WindowClass {
    UINT style = CS_DBLCLKS;
    HCURSOR cursor = kCursorArrow;
    HBRUSH background;
};
/// [any-thread] The window class with these properties.
WindowClass AfxRegisterWndClass(UINT style, HCURSOR cursor = kCursorArrow, HBRUSH background = {});
/// [any-thread] The pointer numbered `id`; the first argument is always 0.
HCURSOR LoadCursor(int module, UINT id);
/// [any-thread] Stock brush 0 (white), 1 (light grey) or 5 (none).
HBRUSH GetStockObject(int number);
/// [any-thread] Width or height in pixels of a part of a window (SM_...); 0 for what there is none of.
int GetSystemMetrics(int index);
/// [main-thread] Negative while `key` (VK_SHIFT, VK_CONTROL, VK_MENU, VK_LBUTTON) is held, as of the message
/// that is being handled; 0 otherwise, and when no window of the calling thread is open.
short GetKeyState(int key);

/// Where a window goes and what it is.
struct CWindowAttr {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    UINT style = 0;
};

/// A message on its way to `target`.
struct MSG {
    CWnd* target = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
};

/// A window. Every operation is [main-thread], on the thread of the editor's idle, but where something else is
/// said; so it is in the classes derived from it.
///
/// A window is created into a parent that lives (a `CFrameWnd` with a host's window, or a window below it)
/// and belongs to that editor from then on. Messages reach it through its message map; what the map does not
/// name goes to `DefWindowProc`. A handler may destroy or even delete its own window.
class CWnd : public CCmdTarget {
  public:
    CWnd();
    /// Destroys the window first if it exists.
    ~CWnd() override; // NOLINT(bugprone-exception-escape): lack of memory in a handler
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    /// Creates the window at `rect` of `parent`'s client area. WM_CREATE is sent; when it answers -1 the
    /// window goes away again. False then, and when the parent does not live.
    virtual bool Create(const WindowClass& windowClass, const char* name, UINT style, const CRect& rect,
                        CWnd* parent, UINT id);
    /// Sends WM_DESTROY to this window and then to its children, and takes them away. Timers, captures, menus
    /// and pending messages of theirs end. Nothing happens when there is no window.
    virtual bool DestroyWindow();
    /// True from before WM_CREATE to after WM_DESTROY.
    bool IsWindow() const { return session_ != nullptr; }

    /// @name Place, size, showing
    /// @{
    /// Tells the window its bounds in its parent; sends WM_SIZE and WM_MOVE for what changed.
    void SetBounds(const CRect& bounds);
    bool MoveWindow(int x, int y, int width, int height, bool repaint = true);
    bool SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags);
    bool ShowWindow(int show);
    /// True when this window and all above it up to the top-level one are shown.
    bool IsWindowVisible() const;
    void GetClientRect(CRect* rect) const { *rect = {0, 0, bounds_.Width(), bounds_.Height()}; }
    /// Bounds in the parent's client area; of a dialog or menu on the screen, where it was put.
    const CRect& bounds() const { return bounds_; }
    /// The system's number of the native window that this one is or lies in; 0 without one. Waits until other
    /// programs can see that window, too.
    std::uintptr_t NativeId() const;
    /// @}

    /// @name Painting
    /// Painting happens at the end of the idle, once, for all that was invalidated.
    /// @{
    void Invalidate(bool erase = true);
    void InvalidateRect(const CRect* rect, bool erase = true);
    /// What is to be painted, in client coordinates; empty when nothing is.
    CRect updateRect() const { return update_.GetRgnBox(); }
    /// @}

    /// @name Messages
    /// @{
    /// Handles the message before returning and gives its answer; 0 without a window.
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// [any-thread] Puts the message in the queue for the next idle (the window must live while this call
    /// runs; it may be gone when the message comes up, which then is dropped). Takes a lock and may allocate:
    /// not for the audio thread.
    bool PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Runs `action` at the next idle, outside of every handler; dropped when this window is gone by then.
    void Defer(std::function<void()> action);
    /// @}

    /// @name Timer, capture, focus
    /// @{
    /// Starts the window's one timer: WM_TIMER, with number 0, every `elapse` milliseconds (at least 1). A
    /// thread only notes that a tick is due; the message comes at the idle that follows, and ticks that no idle
    /// fetched count as one. A timer that runs is replaced. Gives back `id`, which like `callback` has no
    /// other use.
    UINT SetTimer(UINT id, UINT elapse, void* callback = nullptr);
    /// Stops the timer and waits for its thread's end, which is at once; no WM_TIMER comes afterwards.
    bool KillTimer(UINT id);
    /// Sends all mouse messages to this window until `ReleaseCapture`; gives back who had it.
    CWnd* SetCapture();
    CWnd* GetCapture() const;
    /// Gives the mouse free, if this window or another of the editor holds it.
    void ReleaseCapture();
    /// Gives this window the keyboard within the editor. A window that types (`WantsKeyboard`) takes the
    /// keyboard from the host while it has the focus; the host gets it back as soon as such a window is
    /// hidden, is destroyed or loses the focus to one that does not type. Gives back who had the focus.
    CWnd* SetFocus();
    CWnd* GetFocus() const;
    /// @}

    /// @name Family and text
    /// @{
    CWnd* GetParent() const { return parent_; }
    int GetDlgCtrlID() const { return static_cast<int>(id_); }
    /// The child numbered `id`, at any depth; null when there is none.
    CWnd* GetDlgItem(int id) const;
    void SetDlgItemText(int id, const char* text);
    /// Number of bytes; the text is empty when there is no such child.
    int GetDlgItemText(int id, CString& text) const;
    UINT GetStyle() const { return style_; }
    /// UTF-8.
    void SetWindowText(const char* text);
    void GetWindowText(CString& text) const;
    /// At most `size` - 1 bytes and a NUL; the number of bytes.
    int GetWindowText(char* buffer, int size) const;
    void SetFont(CFont* font, bool redraw = true);
    CFont* GetFont() const { return font_; }
    /// A name for the kind of window, for logs and tests.
    virtual const char* ClassName() const { return "CWnd"; }
    /// @}

    /// The handlers of the base: each does what the window does by default with the message being handled.
    /// Name a handler of a derived class in its message map, and call the base's from it where it should go
    /// on.
    int OnCreate() { return static_cast<int>(Default()); }
    void OnDestroy() { Default(); }
    void OnPaint() { Default(); }
    void OnSize(UINT, int, int) { Default(); }
    void OnLButtonDown(UINT, CPoint) { Default(); }
    void OnLButtonUp(UINT, CPoint) { Default(); }
    void OnLButtonDblClk(UINT, CPoint) { Default(); }
    void OnMouseMove(UINT, CPoint) { Default(); }
    void OnTimer(UINT) { Default(); }
    void OnKeyDown(UINT, UINT, UINT) { Default(); }
    void OnChar(UINT, UINT, UINT) { Default(); }
    void OnKillFocus(CWnd*) { Default(); }
    void OnClose() { Default(); }

    /// Asked before a key message goes to `message->target`, from that window upwards; true keeps it from
    /// going.
    virtual bool PreTranslateMessage(MSG* message);
    /// Whether the window types, and so takes the keyboard while it has the focus.
    virtual bool WantsKeyboard() const { return false; }
    /// What to tell a user whose pointer rests at `point` of the client area, UTF-8, and in `about` the part
    /// that this is about; empty for nothing.
    virtual CString TooltipAt(CPoint /*point*/, CRect& /*about*/) { return {}; }
    /// The pointer's look at `point` of the client area.
    virtual HCURSOR CursorAt(CPoint point) const;

    /// @name For the layer itself
    /// @{
    /// Expires with this object.
    std::weak_ptr<bool> LifeToken() const { return life_; }
    WindowSession* session() const { return session_; }
    const std::vector<CWnd*>& children() const { return children_; }
    /// Whether `other` is this window or inside of it.
    bool IsOrHolds(const CWnd* other) const;
    /// This window's own native window and what belongs to it; null for a window inside of another one.
    TopLevel* ownTopLevel() const { return topLevel_.get(); }
    /// That of the window around this one; `offset` becomes the place of this window in it. Null without one.
    TopLevel* FindTopLevel(CPoint* offset = nullptr) const;
    /// The innermost shown and enabled window at `point` of the client area; null outside of it.
    CWnd* WindowAt(CPoint point);
    /// The part of the window that nothing covers, in coordinates of the top-level window.
    CRgn VisiblePart() const;
    /// Everything in the window has to be painted again.
    void InvalidateWithChildren();
    /// Sends WM_ERASEBKGND and WM_PAINT if something is invalid.
    void PaintInvalid();
    /// True inside of `PaintInvalid`; `invalid` becomes what is to be painted. Otherwise somebody has sent
    /// WM_PAINT: all of the window is painted, and counts as painted.
    bool BeginPaint(CRgn& invalid);
    /// Sends WM_TIMER if the timer has ticked.
    void SendTimerTick();
    /// @}

  protected:
    /// Looks the message up and calls what it finds, else `DefWindowProc`.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// What the window does with a message that its map does not name.
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// `DefWindowProc` with the message that is being handled.
    LRESULT Default();
    /// The text changed through `SetWindowText`.
    virtual void TextChanged() {}
    /// Sends WM_COMMAND with this control's id and a notification to the parent.
    void NotifyParent(UINT notification);

    CString text_;

    /// Creates the window in `session`: as a child of `parent`, or as a top-level window of `kind` when that
    /// is given (a dialog's or menu's bounds are on the screen, `owner` is what it belongs to).
    bool CreateIn(WindowSession& session, CWnd* parent, const platform::WindowKind* kind, CWnd* owner,
                  const WindowClass& windowClass, const char* name, UINT style, const CRect& rect, UINT id);
    /// For the frame around the host's window, which is not created: it is shown, with these bounds, from now
    /// on, or, without a session, has no children any more.
    void Attach(WindowSession* session, const CRect& bounds);

  private:
    void TakeFocusAway();

    WindowSession* session_ = nullptr;
    CWnd* parent_ = nullptr;
    std::vector<CWnd*> children_; ///< bottom to top
    WindowClass class_;
    CRect bounds_;
    CRgn update_; ///< to be painted, in client coordinates
    CRgn late_;   ///< what was invalidated while painting
    bool painting_ = false;
    bool destroying_ = false;
    UINT style_ = 0;
    UINT id_ = 0;
    CFont* font_ = nullptr;
    MSG current_;
    std::shared_ptr<TopLevel> topLevel_;
    std::unique_ptr<TimerThread> timer_;
    std::shared_ptr<bool> life_; ///< for `LifeToken`
};

} // namespace vocafade
