// SPDX-License-Identifier: MIT
#include "ui/platform/win32/window_class.h"

#include "ui/platform/win32/display.h"

#include <string>

namespace vocafade::platform::win32 {
namespace {

class WindowClass {
  public:
    WindowClass() {
        const auto here = reinterpret_cast<std::uintptr_t>(ThisModule());
        const std::wstring name =
            L"Vocafade " + std::to_wstring(here) + L" " + std::to_wstring(::GetTickCount64());
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = &NativeWindow::Procedure;
        description.hInstance = ThisModule();
        description.lpszClassName = name.c_str();
        atom_ = ::RegisterClassExW(&description);
    }
    ~WindowClass() { ::UnregisterClassW(MAKEINTATOM(atom_), ThisModule()); }
    WindowClass(const WindowClass&) = delete;
    WindowClass& operator=(const WindowClass&) = delete;

    static ATOM Atom() {
        static const WindowClass it;
        return it.atom_;
    }

  private:
    ATOM atom_;
};

} // namespace

HINSTANCE ThisModule() {
    HINSTANCE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<const wchar_t*>(&ThisModule), &module);
    return module;
}

const wchar_t* OurClass() { return MAKEINTATOM(WindowClass::Atom()); }

bool IsOurWindow(HWND window) {
    return ::GetClassLongPtrW(window, GCW_ATOM) == WindowClass::Atom() &&
           ::GetClassLongPtrW(window, GCLP_HMODULE) == reinterpret_cast<ULONG_PTR>(ThisModule());
}

} // namespace vocafade::platform::win32
