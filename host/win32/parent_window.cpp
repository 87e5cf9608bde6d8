// SPDX-License-Identifier: MIT
#include "host/parent_window.h"

#include <algorithm>
#include <windows.h>

namespace vocafade::host {
namespace {

HWND Handle(std::uint32_t id) { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(id)); }

} // namespace

std::unique_ptr<ParentWindow> ParentWindow::Make(int width, int height, bool frame) {
    const DWORD style = (frame ? WS_OVERLAPPEDWINDOW : WS_POPUP) | WS_CLIPCHILDREN;
    const DWORD more = frame ? 0 : WS_EX_TOPMOST;
    RECT r{0, 0, width, height};
    ::AdjustWindowRectEx(&r, style, FALSE, more);
    // A class that every process has.
    const HWND window = ::CreateWindowExW(more, L"STATIC", L"", style, 0, 0, r.right - r.left,
                                          r.bottom - r.top, nullptr, nullptr, nullptr, nullptr);
    if (window == nullptr) return nullptr;
    return std::unique_ptr<ParentWindow>(
        new ParentWindow(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window))));
}

ParentWindow::~ParentWindow() { ::DestroyWindow(Handle(id_)); }

void ParentWindow::Show() { ::ShowWindow(Handle(id_), SW_SHOWNOACTIVATE); }

std::vector<std::uint32_t> ParentWindow::Children() {
    std::vector<std::uint32_t> children;
    for (HWND child = ::GetWindow(Handle(id_), GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) // top to bottom
        children.push_back(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(child)));
    std::reverse(children.begin(), children.end());
    return children;
}

bool ParentWindow::isAlive() const { return ::IsWindow(Handle(id_)) != 0; }

} // namespace vocafade::host
