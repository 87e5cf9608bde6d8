// SPDX-License-Identifier: MIT
// A user at the X server that Wine shows the windows on; `windows_user`, which started this program, is his hands and
// eyes there. The host's windows are this program's own.
#include "apps/validate/win32/kernel_objects.h"
#include "base/win32/wide_text.h"
#include "tests/support/process_counts.h"
#include "tests/support/wait_for.h"
#include "tests/support/x_server.h"
#include "tests/support/x_user.h"

#include <X11/keysym.h>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <windows.h>

namespace vocafade::test {
namespace {

HWND Handle(xcb_window_t window) { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window)); }

xcb_window_t IdOf(HWND window) { return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window)); }

int hostKeys = 0;

LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_LBUTTONDOWN) ::SetFocus(window);
    return ::DefWindowProcW(window, message, wParam, lParam);
}

const wchar_t* HostClass() {
    static const ATOM atom = [] {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = &HostProcedure;
        description.hInstance = ::GetModuleHandleW(nullptr);
        description.hbrBackground = static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH));
        description.lpszClassName = L"Vocafade test host";
        return ::RegisterClassExW(&description);
    }();
    return MAKEINTATOM(atom);
}

/// What a host's message loop does, until there is nothing left: one that has a shortcut on every key, and so hands none
/// on to any window.
void Pump() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (message.message == WM_KEYDOWN) {
            ++hostKeys;
            continue;
        }
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

void Ask(const std::string& request) {
    std::fflush(stdout);
    const std::string line = "\n\x01user " + request + " 0 0 0 0\n";
    DWORD done = 0;
    ::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), line.data(), static_cast<DWORD>(line.size()), &done,
                nullptr);
    char answer = 0;
    while (answer != '\n')
        if (::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), &answer, 1, &done, nullptr) == 0 || done == 0)
            throw std::runtime_error("windows_user is gone");
}

template <typename... Numbers>
void AskFor(const char* verb, Numbers... numbers) {
    std::ostringstream request;
    request << verb;
    ((request << ' ' << numbers), ...);
    Ask(request.str());
    Pump();
}

/// The windows below `parent`, null for the screen, from bottom to top.
std::vector<HWND> Below(HWND parent) {
    std::vector<HWND> windows;
    for (HWND window = ::GetTopWindow(parent); window != nullptr; window = ::GetWindow(window, GW_HWNDNEXT))
        windows.insert(windows.begin(), window);
    return windows;
}

/// The clipboard in another program's hands.
struct OpenedClipboard {
    explicit OpenedClipboard(HWND owner) {
        WaitFor([] {}, [owner] { return ::OpenClipboard(owner) != 0; });
    }
    ~OpenedClipboard() { ::CloseClipboard(); }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;
};

} // namespace

std::size_t OpenFiles() { return static_cast<std::size_t>(validate::CountHandles()); }

std::size_t Threads() {
    static const int others = validate::CountThreads() - 1; // the system's own
    return static_cast<std::size_t>(validate::CountThreads() - others);
}

bool XServer::IsInstalled() { return ::GetEnvironmentVariableW(L"VOCAFADE_LOOK", nullptr, 0) != 0; }
XServer::XServer() = default;
XServer::~XServer() = default;

void NeedsXServer::SetUp() {
    if (!XServer::IsInstalled()) FAIL() << "windows_user must start this program";
}

std::string NumberSetting(std::string_view name, std::uint32_t value) {
    return name == "Net/DoubleClickTime" ? std::to_string(value) : std::string();
}
std::string DoubleClickSettings(std::uint32_t milliseconds) {
    return NumberSetting("Net/DoubleClickTime", milliseconds);
}

XUser::XUser() = default;
XUser::~XUser() = default;

xcb_window_t XUser::MakeWindow(int x, int y, int width, int height, bool show, xcb_window_t parent) {
    const DWORD style = (parent != 0 ? WS_CHILD : WS_POPUP) | WS_CLIPCHILDREN;
    const HWND window = ::CreateWindowExW(0, HostClass(), L"host", style, x, y, width, height, Handle(parent),
                                          nullptr, ::GetModuleHandleW(nullptr), nullptr);
    if (show) Show(IdOf(window));
    return IdOf(window);
}

void XUser::DestroyWindow(xcb_window_t window) {
    ::DestroyWindow(Handle(window));
    Sync();
}

void XUser::Show(xcb_window_t window) {
    ::ShowWindow(Handle(window), SW_SHOW);
    ::SetForegroundWindow(Handle(window));
    Sync();
}

void XUser::Hide(xcb_window_t window) {
    ::ShowWindow(Handle(window), SW_HIDE);
    Sync();
}

void XUser::Resize(xcb_window_t window, int width, int height) {
    ::SetWindowPos(Handle(window), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Sync();
}

void XUser::Reparent(xcb_window_t window, xcb_window_t parent, int x, int y) {
    ::SetWindowLongPtrW(Handle(window), GWL_STYLE, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN);
    ::SetParent(Handle(window), Handle(parent));
    ::SetWindowPos(Handle(window), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Sync();
}

void XUser::PublishSettings(std::string_view bytes) {
    if (!bytes.empty()) ::SetDoubleClickTime(static_cast<UINT>(std::stoul(std::string(bytes))));
}

int XUser::TakeHostKeys() {
    Sync();
    return std::exchange(hostKeys, 0);
}

xcb_window_t XUser::Root() const { return 0; }

std::vector<xcb_window_t> XUser::Children(xcb_window_t window) {
    if (window == Root()) return TopLevels();
    Sync();
    std::vector<xcb_window_t> children;
    for (const HWND child : Below(Handle(window)))
        children.push_back(IdOf(child));
    return children;
}

std::vector<xcb_window_t> XUser::TopLevels() {
    Sync();
    std::vector<xcb_window_t> windows;
    for (const HWND window : Below(nullptr)) {
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window) != 0)
            windows.push_back(IdOf(window));
    }
    return windows;
}

XUser::Bounds XUser::BoundsOf(xcb_window_t window) {
    if (window == Root()) return {0, 0, ::GetSystemMetrics(SM_CXSCREEN), ::GetSystemMetrics(SM_CYSCREEN)};
    Sync();
    RECT client{};
    POINT place{};
    ::GetClientRect(Handle(window), &client);
    ::ClientToScreen(Handle(window), &place);
    return {static_cast<int>(place.x), static_cast<int>(place.y), static_cast<int>(client.right),
            static_cast<int>(client.bottom)};
}

xcb_window_t XUser::Focus() {
    Sync();
    return IdOf(::GetFocus());
}

void XUser::SetFocus(xcb_window_t window) {
    ::SetFocus(Handle(window));
    Sync();
}

void XUser::MoveTo(int x, int y) { AskFor("move", x, y); }
void XUser::Press(int button) { AskFor("press", button); }
void XUser::Release(int button) { AskFor("release", button); }
bool XUser::MouseIsFree() {
    // A menu looks for itself whether it is still to be seen, every now and then.
    for (int i = 0; i < 30 && ::GetCapture() != nullptr; ++i) {
        Sync();
        ::Sleep(10);
    }
    return ::GetCapture() == nullptr;
}

void XUser::Key(xcb_keysym_t keysym) {
    // Wine knows the keys of the layouts that people have, and not the spare ones of `AddKeys`.
    constexpr xcb_keysym_t kUnicode = 0x1000000;
    const bool latin = keysym >= 0xA0 && keysym <= 0xFF;
    if (!latin && keysym < kUnicode) return AskFor("key", keysym);
    INPUT typed[2]{};
    typed[0].type = typed[1].type = INPUT_KEYBOARD;
    typed[0].ki.wScan = typed[1].ki.wScan = static_cast<WORD>(keysym);
    typed[0].ki.dwFlags = KEYEVENTF_UNICODE;
    typed[1].ki.dwFlags = KEYEVENTF_UNICODE | KEYEVENTF_KEYUP;
    ::SendInput(2, typed, sizeof typed[0]);
    Sync();
}
void XUser::KeyDown(xcb_keysym_t keysym) { AskFor("down", keysym); }
void XUser::KeyUp(xcb_keysym_t keysym) { AskFor("up", keysym); }

void XUser::Hold(xcb_window_t window, xcb_keysym_t keysym, int times) {
    if (keysym != XK_Down) throw std::runtime_error("only Down is known here");
    for (int i = 0; i < times; ++i)
        ::PostMessageW(Handle(window), WM_KEYDOWN, VK_DOWN, 1);
}

void XUser::AddKeys(const std::vector<xcb_keysym_t>& keysyms) {
    xcb_keysym_t three[3] = {XK_VoidSymbol, XK_VoidSymbol, XK_VoidSymbol};
    std::copy_n(keysyms.begin(), std::min<std::size_t>(3, keysyms.size()), three);
    AskFor("add", three[0], three[1], three[2]);
}

void XUser::TakeGermanKeyboard() { AskFor("german"); }

std::string XUser::TakeClipboard(const std::function<void()>& /*idle*/) {
    const OpenedClipboard clipboard(Handle(TopLevels().front()));
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    if (data == nullptr) return {};
    const std::string text = vocafade::win32::Narrow(static_cast<const wchar_t*>(::GlobalLock(data)));
    ::GlobalUnlock(data);
    return text;
}

void XUser::OfferClipboard(const std::string& text) {
    const std::wstring wide = vocafade::win32::Wide(text);
    OfferClipboardBytes({reinterpret_cast<const char*>(wide.c_str()), (wide.size() + 1) * sizeof(wchar_t)});
}

void XUser::OfferClipboardBytes(std::string_view bytes) {
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::copy(bytes.begin(), bytes.end(), static_cast<char*>(::GlobalLock(memory)));
    ::GlobalUnlock(memory);
    const OpenedClipboard clipboard(Handle(TopLevels().front()));
    ::EmptyClipboard();
    ::SetClipboardData(CF_UNICODETEXT, memory);
}

Picture XUser::Look(xcb_window_t window, int x, int y, int width, int height) {
    POINT place{x, y};
    ::ClientToScreen(Handle(window), &place);
    Pump();
    ::GdiFlush();
    AskFor("look", place.x, place.y, width, height);
    std::ifstream file("Z:" + std::string(std::getenv("VOCAFADE_LOOK")), std::ios::binary);
    Picture picture;
    file.read(reinterpret_cast<char*>(&picture.width), sizeof picture.width);
    file.read(reinterpret_cast<char*>(&picture.height), sizeof picture.height);
    picture.pixels.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
    file.read(reinterpret_cast<char*>(picture.pixels.data()),
              static_cast<std::streamsize>(picture.pixels.size() * sizeof picture.pixels[0]));
    return picture;
}

void XUser::Sync() { Pump(); } // what was asked for has reached the windows when the answer comes

} // namespace vocafade::test
