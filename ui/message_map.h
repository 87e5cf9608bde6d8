// SPDX-License-Identifier: MIT
#pragma once

#include "ui/geometry.h"
#include "ui/winuser.h"

#include <span>

namespace vocafade {

class CCmdTarget;
class CWnd;

/// One line of a message map: which messages it is for, and what they call.
struct MessageEntry {
    UINT message = 0;
    UINT code = 0;    ///< notification of WM_COMMAND
    UINT firstId = 0; ///< ids of WM_COMMAND, both included
    UINT lastId = 0;
    LRESULT (*invoke)(CCmdTarget& target, WPARAM wParam, LPARAM lParam) = nullptr;
};

/// The map of one class, and the way to that of its base.
struct MessageMap {
    const MessageMap* (*base)() = nullptr;
    std::span<const MessageEntry> entries;
};

/// Anything that has a message map.
class CCmdTarget {
  public:
    virtual ~CCmdTarget() = default;

    /// The map of the object's own class.
    virtual const MessageMap* GetMessageMap() const;
    static const MessageMap* ThisMessageMap();

  protected:
    CCmdTarget() = default;
    /// The first entry for the message in this class or its bases; null when there is none.
    const MessageEntry* FindEntry(UINT message, WPARAM wParam) const;
};

/// The application object.
class CWinApp : public CCmdTarget {
  public:
    CWinApp() = default;
    ~CWinApp() override = default;
};

} // namespace vocafade

/// How a message map is written: `DECLARE_MESSAGE_MAP()` in the class, and beside its functions
///
///     BEGIN_MESSAGE_MAP(CPanel, CWnd)
///     ON_WM_PAINT()
///     ON_MESSAGE(0x0A01, OnInputValReturn)
///     ON_COMMAND_RANGE(1010, 1110, OnSelCopyPg)
///     END_MESSAGE_MAP()
///
/// (clang-format: keep such a block between `// clang-format off` and `on`.)
/// The first entry that fits is used, those of a class before those of its base.
#define DECLARE_MESSAGE_MAP()                                                                                \
  public:                                                                                                    \
    const ::vocafade::MessageMap* GetMessageMap() const override;                                            \
    static const ::vocafade::MessageMap* ThisMessageMap();

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                                               \
    const ::vocafade::MessageMap* theClass::GetMessageMap() const { return ThisMessageMap(); }               \
    const ::vocafade::MessageMap* theClass::ThisMessageMap() {                                               \
        using ThisClass [[maybe_unused]] = theClass;                                                         \
        using BaseClass = baseClass;                                                                         \
        static constexpr ::vocafade::MessageEntry entries[] = {

#define END_MESSAGE_MAP()                                                                                    \
    ::vocafade::MessageEntry {}                                                                              \
    }                                                                                                        \
    ;                                                                                                        \
    static constexpr ::vocafade::MessageMap map{                                                             \
        &BaseClass::ThisMessageMap,                                                                          \
        std::span<const ::vocafade::MessageEntry>(entries, std::size(entries) - 1)};                         \
    return &map;                                                                                             \
    }

#define VOCAFADE_ENTRY(message, code, firstId, lastId, ...)                                                  \
    ::vocafade::MessageEntry{message, code, firstId, lastId,                                                 \
                             [](::vocafade::CCmdTarget& target, [[maybe_unused]] ::vocafade::WPARAM wParam,  \
                                [[maybe_unused]] ::vocafade::LPARAM lParam) -> ::vocafade::LRESULT {         \
                                 [[maybe_unused]] auto& self = static_cast<ThisClass&>(target);              \
                                 __VA_ARGS__                                                                 \
                             }},

/// `int OnCreate()`: 0 goes on, -1 refuses the window.
#define ON_WM_CREATE() VOCAFADE_ENTRY(::vocafade::WM_CREATE, 0, 0, 0, return self.OnCreate();)
/// `void OnDestroy()`
#define ON_WM_DESTROY() VOCAFADE_ENTRY(::vocafade::WM_DESTROY, 0, 0, 0, self.OnDestroy(); return 0;)
/// `void OnPaint()`
#define ON_WM_PAINT() VOCAFADE_ENTRY(::vocafade::WM_PAINT, 0, 0, 0, self.OnPaint(); return 0;)
/// `void OnSize(UINT type, int width, int height)`
#define ON_WM_SIZE()                                                                                         \
    VOCAFADE_ENTRY(::vocafade::WM_SIZE, 0, 0, 0,                                                             \
                   const ::vocafade::CPoint size = ::vocafade::CPoint::FromMessage(lParam);                  \
                   self.OnSize(static_cast<::vocafade::UINT>(wParam), size.x, size.y); return 0;)
#define VOCAFADE_MOUSE_ENTRY(message, handler)                                                               \
    VOCAFADE_ENTRY(                                                                                          \
        message, 0, 0, 0,                                                                                    \
        self.handler(static_cast<::vocafade::UINT>(wParam), ::vocafade::CPoint::FromMessage(lParam));        \
        return 0;)
/// `void OnLButtonDown(UINT flags, CPoint point)` and its companions; the flags are always 0.
#define ON_WM_LBUTTONDOWN() VOCAFADE_MOUSE_ENTRY(::vocafade::WM_LBUTTONDOWN, OnLButtonDown)
#define ON_WM_LBUTTONUP() VOCAFADE_MOUSE_ENTRY(::vocafade::WM_LBUTTONUP, OnLButtonUp)
#define ON_WM_LBUTTONDBLCLK() VOCAFADE_MOUSE_ENTRY(::vocafade::WM_LBUTTONDBLCLK, OnLButtonDblClk)
#define ON_WM_MOUSEMOVE() VOCAFADE_MOUSE_ENTRY(::vocafade::WM_MOUSEMOVE, OnMouseMove)
/// `void OnTimer(UINT id)`: the id is always 0.
#define ON_WM_TIMER()                                                                                        \
    VOCAFADE_ENTRY(::vocafade::WM_TIMER, 0, 0, 0, self.OnTimer(static_cast<::vocafade::UINT>(wParam));       \
                   return 0;)
#define VOCAFADE_KEY_ENTRY(message, handler)                                                                 \
    VOCAFADE_ENTRY(message, 0, 0, 0,                                                                         \
                   self.handler(static_cast<::vocafade::UINT>(wParam),                                       \
                                static_cast<::vocafade::UINT>(lParam & 0xFFFF),                              \
                                static_cast<::vocafade::UINT>((lParam >> 16) & 0xFFFF));                     \
                   return 0;)
/// `void OnKeyDown(UINT key, UINT repeats, UINT flags)`, `void OnChar(UINT character, UINT repeats, UINT
/// flags)`
#define ON_WM_KEYDOWN() VOCAFADE_KEY_ENTRY(::vocafade::WM_KEYDOWN, OnKeyDown)
#define ON_WM_CHAR() VOCAFADE_KEY_ENTRY(::vocafade::WM_CHAR, OnChar)
/// `void OnKillFocus(CWnd* to)`
#define ON_WM_KILLFOCUS()                                                                                    \
    VOCAFADE_ENTRY(::vocafade::WM_KILLFOCUS, 0, 0, 0,                                                        \
                   self.OnKillFocus(reinterpret_cast<::vocafade::CWnd*>(wParam));                            \
                   return 0;)
/// `void OnClose()`
#define ON_WM_CLOSE() VOCAFADE_ENTRY(::vocafade::WM_CLOSE, 0, 0, 0, self.OnClose(); return 0;)
/// Any message: `LRESULT handler(WPARAM, LPARAM)`
#define ON_MESSAGE(message, handler) VOCAFADE_ENTRY(message, 0, 0, 0, return self.handler(wParam, lParam);)
/// A notification of control `id`: `void handler()`
#define ON_CONTROL(code, id, handler)                                                                        \
    VOCAFADE_ENTRY(::vocafade::WM_COMMAND, code, id, id, self.handler(); return 0;)
/// A command: `void handler()`
#define ON_COMMAND(id, handler) ON_CONTROL(0, id, handler)
#define ON_CBN_SELCHANGE(id, handler) ON_CONTROL(::vocafade::CBN_SELCHANGE, id, handler)
/// Commands `first` to `last`, both included: `void handler(UINT id)`
#define ON_COMMAND_RANGE(first, last, handler)                                                               \
    VOCAFADE_ENTRY(::vocafade::WM_COMMAND, 0, first, last, self.handler(::vocafade::LOWORD(wParam));         \
                   return 0;)
