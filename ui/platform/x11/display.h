// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"
#include "ui/platform/x11/desktop_settings.h"
#include "ui/platform/x11/input_method.h"
#include "ui/platform/x11/keyboard.h"
#include "ui/platform/x11/reply.h"

#include <deque>
#include <map>
#include <memory>
#include <xcb/xcb.h>

namespace vocafade::platform::x11 {

class NativeWindow;

/// Names that the server knows by number.
struct Atoms {
    xcb_atom_t wmProtocols, wmDeleteWindow, wmState, netWmName, netWmWindowType, netWmWindowTypeDialog,
        netWmWindowTypePopupMenu, netWmWindowTypeTooltip, netWmUserTime, netActiveWindow,
        netSupportingWmCheck, utf8String, clipboard, targets, selectionProperty, xembedInfo, xsettingsOwner,
        xsettingsSettings, manager;
};

/// How a pixel of the windows' visual is made.
struct PixelFormat {
    std::uint8_t depth = 0;
    std::uint8_t bitsPerPixel = 0;
    std::uint8_t scanlinePad = 32;
    bool direct = false; ///< 32-bit numbers in our byte order and as 0x00RRGGBB
    bool mostSignificantFirst = false;
    std::uint32_t red = 0, green = 0, blue = 0; ///< masks
};

/// One connection to an X server.
class XDisplay : public Display {
  public:
    /// Null when there is no display to connect to.
    static std::unique_ptr<XDisplay> Open();
    ~XDisplay() override;
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;

    bool IsAlive() override { return xcb_connection_has_error(connection_) == 0; }
    double DesktopScale() override { return desktop_.scale; }
    void SetScale(double scale) override;
    bool WatchHost(std::uintptr_t host, CSize& size) override;
    std::unique_ptr<Window> MakeWindow(const WindowRequest& request) override;
    bool NextEvent(Event& event) override;
    void Flush() override;
    bool IsLeftButtonHeld() override;
    CRect WorkArea(CPoint point) override;
    unsigned DoubleClickTime() const override { return desktop_.doubleClickTime; }
    int DoubleClickDistance() const override { return desktop_.doubleClickDistance; }
    void OfferClipboard(std::string text) override;
    void RequestClipboard(Window& window) override;

    xcb_connection_t* connection() const { return connection_; }
    double scale() const { return scale_; }
    const xcb_screen_t& screen() const { return *screen_; }
    const Atoms& atoms() const { return atoms_; }
    const PixelFormat& format() const { return format_; }
    xcb_visualid_t visual() const { return visual_; }
    xcb_colormap_t colormap() const { return colormap_; }
    /// Made with the first window.
    xcb_gcontext_t graphics() const { return graphics_; }
    std::uint32_t lastTime() const { return lastTime_; }
    Keyboard& keyboard() { return keyboard_; }
    bool HasWindowManager() const { return hasWindowManager_; }
    xcb_cursor_t CursorFor(unsigned cursor);
    /// Events for `id` go to `window` from now on.
    void Know(xcb_window_t id, NativeWindow& window) { windows_[id] = &window; }
    /// Also what has already been made of its events.
    void Forget(const NativeWindow& window);
    void RetryGrab(xcb_window_t popup) { grabWanted_ = popup; }
    /// Text is typed into `window`, its caret reaching down to `caret` (logical pixels of the window).
    void BeginTyping(NativeWindow& window, CPoint caret);
    /// No text is typed into `window` any more, if it was. Keys that the input method owes are the window's.
    void EndTyping(const NativeWindow& window);
    void InputLost(NativeWindow& popup);

  private:
    XDisplay(xcb_connection_t* connection, int screenNumber);
    bool Prepare();
    void InternAtoms();
    bool ChooseVisual();
    /// Looks up who publishes the desktop's settings, reads them, and asks to hear of changes.
    void FollowDesktopSettings();
    void ReadSettings();
    xcb_atom_t TypeOf(WindowKind kind) const;
    /// In device pixels: the monitor that has `point`, else all of the screen.
    CRect MonitorAt(CPoint point);
    NativeWindow* Find(xcb_window_t id) const;
    /// Turns what X tells into what the layer knows; nothing or several may come of it.
    void Translate(xcb_generic_event_t* event);
    void TranslateButton(const xcb_button_press_event_t& event, bool pressed);
    void TranslateKey(const xcb_key_press_event_t& event);
    void TranslateFocus(const xcb_focus_in_event_t& event, bool gained);
    void AnswerSelection(const xcb_selection_request_event_t& request);
    void ReceiveSelection(const xcb_selection_notify_event_t& event);
    /// From here on keys are typed as they are.
    void DropInputMethod();
    Event Basic(EventType type, NativeWindow* window, std::uint16_t state, std::uint32_t time) const;

    xcb_connection_t* connection_;
    int screenNumber_;
    xcb_screen_t* screen_ = nullptr;
    Atoms atoms_{};
    PixelFormat format_;
    xcb_visualid_t visual_ = 0;
    xcb_colormap_t colormap_ = 0;
    bool ownsColormap_ = false;
    xcb_gcontext_t graphics_ = 0;
    bool hasRandr_ = false;
    bool hasWindowManager_ = false;
    Keyboard keyboard_;
    NativeWindow* typedInto_ = nullptr;
    CPoint caret_; ///< in it
    std::unique_ptr<InputMethod> inputMethod_;
    std::map<xcb_window_t, NativeWindow*> windows_;
    xcb_cursor_t textCursor_ = XCB_NONE;
    std::deque<Event> ready_;
    Reply<xcb_generic_event_t> ahead_; ///< read, but not looked at yet
    xcb_window_t host_ = 0;
    xcb_window_t helper_ = 0; ///< never shown; holds the clipboard
    xcb_window_t pasteInto_ = 0;
    xcb_window_t grabWanted_ = 0;
    std::string offered_;
    bool offering_ = false;
    std::uint32_t lastTime_ = 0;
    DesktopSettings desktop_;
    xcb_window_t settingsOwner_ = 0;
    double scale_ = 1.0;
};

/// A window on an X server.
class NativeWindow : public Window {
  public:
    NativeWindow(XDisplay& display, xcb_window_t id, const WindowRequest& request);
    ~NativeWindow() override;
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;

    std::uintptr_t NativeId() const override { return id_; }
    void Move(CPoint place) override;
    void Resize(CSize size) override;
    void Show(bool show) override;
    void Present(Surface& picture, std::span<const CRect> where) override;
    void TakeKeyboard() override;
    void GiveKeyboardBack() override;
    void SetTextInput(const CRect* caret) override;
    void SetCursor(unsigned cursor) override;
    void Raise() override;
    CPoint ScreenPosition() override;

    WindowKind kind() const { return kind_; }
    /// The server has destroyed it.
    void Gone() { id_ = 0; }
    /// It has come onto the screen.
    void Mapped();
    /// Takes all input for a popup; false when that can be tried again: somebody else holds it.
    bool Grab();
    bool IsHolder(xcb_window_t id) const { return id == holder_ && id != 0; }
    /// The place in this window of a mouse event with these places in the event's window and on the screen,
    /// all in device pixels.
    CPoint PointOf(CPoint inEventWindow, CPoint onScreen) const {
        return holder_ != 0 ? onScreen - place_ : inEventWindow;
    }
    bool wantsKeyboard() const { return wantsKeyboard_; }
    /// Whether a picture of all of `area`, in device pixels, is on its way that was sent after the server had
    /// exposed the area: `sequence` is the last request that the server had seen by then.
    bool IsPictureUnderWay(const CRect& area, std::uint32_t sequence) const {
        CRect covered;
        return covered.IntersectRect(area, pictured_) && covered == area &&
               static_cast<std::int32_t>(sequence - picturedBy_) < 0;
    }

  private:
    void SelectEvents();
    /// Presses and moves over it go to what lies below.
    void LetInputThrough();
    /// Asks a window manager to keep a dialog at that size, in device pixels.
    void FixSize(CSize size);
    void FocusSelf();
    void MakeHolder(xcb_window_t owner);

    XDisplay& display_;
    xcb_window_t id_;
    WindowKind kind_;
    xcb_window_t host_;
    xcb_window_t holder_ = 0; ///< of a popup: an invisible child of its owner that holds the grabs
    CPoint place_;            ///< where it was put: in the parent, or on the screen; in device pixels
    unsigned cursor_ = 0;
    CRect pictured_;               ///< what the last picture of the whole window covered, in device pixels
    std::uint32_t picturedBy_ = 0; ///< the first request that it was sent with
    bool wantsKeyboard_ = false;
    bool rememberedFocus_ = false;
    xcb_window_t focusBefore_ = 0;
    std::uint8_t focusRevert_ = 0;
};

} // namespace vocafade::platform::x11
