// SPDX-License-Identifier: MIT
#include "ui/platform/win32/display.h"

#include "base/win32/wide_text.h"
#include "ui/platform/scale.h"
#include "ui/platform/win32/window_class.h"

#include <cstring>

namespace vocafade::platform {
namespace win32 {
namespace {

/// Longest clipboard text that is taken, in UTF-16 units; one line of a name needs far less.
constexpr std::size_t kMostClipboard = 256;
/// Another program has the clipboard for a moment: how often to try, a millisecond apart.
constexpr int kClipboardTries = 5;

HWND Handle(std::uintptr_t id) { return reinterpret_cast<HWND>(id); }

CSize ClientSize(HWND window) {
    RECT client{};
    ::GetClientRect(window, &client);
    return {static_cast<int>(client.right), static_cast<int>(client.bottom)};
}

/// Opens the clipboard to the end of the scope.
class Clipboard {
  public:
    explicit Clipboard(HWND owner) {
        for (int i = 0; i < kClipboardTries && !open_; ++i) {
            open_ = ::OpenClipboard(owner) != 0;
            if (!open_) ::Sleep(1);
        }
    }
    ~Clipboard() {
        if (open_) ::CloseClipboard();
    }
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;
    bool isOpen() const { return open_; }

  private:
    bool open_ = false;
};

} // namespace

double WinDisplay::DesktopScale() {
    // Windows 7 and 8 do not have it.
    using DpiOf = UINT(WINAPI*)(HWND);
    const HMODULE user = ::GetModuleHandleW(L"user32.dll");
    const auto dpiOf =
        reinterpret_cast<DpiOf>(reinterpret_cast<void*>(::GetProcAddress(user, "GetDpiForWindow")));
    double dpi = dpiOf != nullptr && host_ != nullptr ? dpiOf(host_) : 0;
    if (dpi == 0) {
        const HDC screen = ::GetDC(nullptr);
        dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
        ::ReleaseDC(nullptr, screen);
    }
    return dpi / USER_DEFAULT_SCREEN_DPI;
}

bool WinDisplay::WatchHost(std::uintptr_t host, CSize& size) {
    const HWND window = Handle(host);
    if (window == nullptr || ::IsWindow(window) == 0) return false;
    host_ = window;
    hostSize_ = ClientSize(window);
    desktopScale_ = DesktopScale();
    size = ToLogicalSize(hostSize_, scale_);
    return true;
}

std::unique_ptr<Window> WinDisplay::MakeWindow(const WindowRequest& request) {
    auto window = std::make_unique<NativeWindow>(*this, request);
    if (window->NativeId() == 0) return nullptr;
    return window;
}

void WinDisplay::LookAround() {
    if (const CSize size = ClientSize(host_); ::IsWindow(host_) != 0 && size != hostSize_) {
        hostSize_ = size;
        Event event;
        event.type = EventType::parentResized;
        event.area = CRect({0, 0}, ToLogicalSize(size, scale_));
        ready_.push_back(event);
    }
    if (const double scale = DesktopScale(); scale != desktopScale_) {
        desktopScale_ = scale;
        Event event;
        event.type = EventType::scaleChanged;
        ready_.push_back(event);
    }
    for (NativeWindow* window : windows_)
        window->LookAround();
}

bool WinDisplay::NextEvent(Event& event) {
    if (ready_.empty()) LookAround();
    if (ready_.empty()) return false;
    event = std::move(ready_.front());
    ready_.pop_front();
    return true;
}

bool WinDisplay::IsLeftButtonHeld() {
    // A window that is taken off the screen loses the held button, and nothing tells it.
    const HWND holder = ::GetCapture();
    if (holder == nullptr || ::IsWindowVisible(holder) == 0) {
        if (holder != nullptr && IsOurWindow(holder)) ::ReleaseCapture();
        return false;
    }
    const int button = ::GetSystemMetrics(SM_SWAPBUTTON) != 0 ? VK_RBUTTON : VK_LBUTTON;
    if (::GetAsyncKeyState(button) < 0) return true;
    // Released, but the host has not fetched the message yet that will tell us.
    return HIWORD(::GetQueueStatus(QS_MOUSEBUTTON)) != 0;
}

CRect WinDisplay::WorkArea(CPoint point) {
    const CPoint pixel = ToDevice(point, scale_);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    ::GetMonitorInfoW(::MonitorFromPoint({pixel.x, pixel.y}, MONITOR_DEFAULTTONEAREST), &monitor);
    const RECT& area = monitor.rcWork;
    return ToLogicalAround({static_cast<int>(area.left), static_cast<int>(area.top),
                            static_cast<int>(area.right), static_cast<int>(area.bottom)},
                           scale_);
}

void WinDisplay::Forget(const NativeWindow& window) {
    std::erase(windows_, &window);
    std::erase_if(ready_, [&window](const Event& event) { return event.window == &window; });
}

void WinDisplay::OfferClipboard(std::string text) {
    if (windows_.empty()) return;
    const std::wstring wide = vocafade::win32::Wide(text);
    const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const Clipboard clipboard(Handle(windows_.front()->NativeId()));
    if (!clipboard.isOpen() || ::EmptyClipboard() == 0) return;
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (memory == nullptr) return;
    std::memcpy(::GlobalLock(memory), wide.c_str(), bytes);
    ::GlobalUnlock(memory);
    if (::SetClipboardData(CF_UNICODETEXT, memory) == nullptr) ::GlobalFree(memory);
}

void WinDisplay::RequestClipboard(Window& window) {
    const Clipboard clipboard(Handle(window.NativeId()));
    const HANDLE data = clipboard.isOpen() ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
    const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
    if (text == nullptr) return;
    // Its end may be missing: other programs put it there.
    const std::size_t most = std::min(::GlobalSize(data) / sizeof(wchar_t), kMostClipboard);
    Event event = EventNow(EventType::clipboard, &window);
    event.text = vocafade::win32::Narrow({text, ::wcsnlen(text, most)});
    ::GlobalUnlock(data);
    ready_.push_back(event);
}

} // namespace win32

std::unique_ptr<Display> OpenDisplay() { return std::make_unique<win32::WinDisplay>(); }

} // namespace vocafade::platform
