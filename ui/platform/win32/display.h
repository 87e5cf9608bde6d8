// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"
#include "ui/platform/win32/keyboard.h"
#include "ui/platform/win32/surface.h"

#include <deque>
#include <optional>
#include <vector>

namespace vocafade::platform::win32 {

class NativeWindow;

/// The windows of one editor. The host's message loop calls them; what they are told waits here until it is fetched,
/// so that nothing of the layer above ever runs inside the host's loop.
class WinDisplay : public Display {
  public:
    WinDisplay() = default;
    WinDisplay(const WinDisplay&) = delete;
    WinDisplay& operator=(const WinDisplay&) = delete;

    bool IsAlive() override { return true; }
    double DesktopScale() override;
    void SetScale(double scale) override { scale_ = scale; }
    bool WatchHost(std::uintptr_t host, CSize& size) override;
    std::unique_ptr<Window> MakeWindow(const WindowRequest& request) override;
    bool NextEvent(Event& event) override;
    void Flush() override { ::GdiFlush(); }
    bool IsLeftButtonHeld() override;
    CRect WorkArea(CPoint point) override;
    unsigned DoubleClickTime() const override { return ::GetDoubleClickTime(); }
    int DoubleClickDistance() const override { return ::GetSystemMetrics(SM_CXDOUBLECLK) / 2; }
    void OfferClipboard(std::string text) override;
    void RequestClipboard(Window& window) override;

    double scale() const { return scale_; }
    std::deque<Event>& ready() { return ready_; }
    void Know(NativeWindow& window) { windows_.push_back(&window); }
    /// Also what has already been made of its events.
    void Forget(const NativeWindow& window);

  private:
    /// Makes events of what no message tells: the size and scale of the host's window, the end of a popup's input.
    void LookAround();

    double scale_ = 1.0;
    HWND host_ = nullptr;
    CSize hostSize_; ///< device pixels
    double desktopScale_ = 0;
    std::vector<NativeWindow*> windows_;
    std::deque<Event> ready_;
};

/// A window of the system's.
class NativeWindow : public Window {
  public:
    NativeWindow(WinDisplay& display, const WindowRequest& request);
    ~NativeWindow() override;
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;

    std::uintptr_t NativeId() const override { return reinterpret_cast<std::uintptr_t>(id_); }
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

    /// Does what no message tells the time for: ends the input of a popup whose owner has gone from the screen, takes the
    /// keyboard for a window that has come onto it.
    void LookAround();

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  private:
    /// The answer to a message; nothing for what the system does with it by itself.
    std::optional<LRESULT> Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void HandleButton(UINT message, WPARAM wParam, LPARAM lParam);
    void HandleMove(CPoint inClient);
    void HandleWheel(WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> HandleKey(UINT message, WPARAM wParam, LPARAM lParam);
    void HandleCharacter(wchar_t unit);
    std::optional<LRESULT> HandleComposition(LPARAM parts);
    void PlaceInputMethod();
    void Repaint();
    void Push(EventType type) { display_.ready().push_back(EventNow(type, this)); }
    void StartPopup();
    void EndPopup();
    void LoseInput();
    bool IsLeftAlone() const;
    /// The frame around a client area at `client`, device pixels.
    CRect WithFrame(const CRect& client) const;
    bool isPopup() const { return kind_ == WindowKind::popup; }

    WinDisplay& display_;
    HWND id_ = nullptr;
    WindowKind kind_;
    HWND host_;
    HWND owner_; ///< of a popup
    DWORD style_ = 0;
    DWORD moreStyle_ = 0;
    DWORD thread_ = ::GetCurrentThreadId();
    std::unique_ptr<DibSurface> shown_; ///< a copy of what is to be seen
    std::unique_ptr<KeyHook> hook_;     ///< while it has the keyboard, or is a popup on the screen
    HWND focusBefore_ = nullptr;
    bool wantsKeyboard_ = false;
    bool waitsForKeyboard_ = false; ///< until it is to be seen
    bool watchesLeave_ = false;
    unsigned cursor_ = 0;
    wchar_t firstHalf_ = 0; ///< of a character in two units, whose second has not come yet
    std::optional<CRect> caret_;
};

} // namespace vocafade::platform::win32
