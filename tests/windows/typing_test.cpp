// SPDX-License-Identifier: MIT
// What is Windows' own about typing: AltGr, dead keys and the clipboard.
#include "base/win32/wide_text.h"
#include "tests/ui/desk.h"

#include <X11/keysym.h>
#include <windows.h>
// Ours have these names too.
#undef GetWindowText
#undef SetWindowText

namespace vocafade::test {
namespace {

/// The clipboard in another program's hands.
class OthersClipboard {
  public:
    explicit OthersClipboard(xcb_window_t window) {
        const HWND owner = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window));
        WaitFor([] {}, [owner] { return ::OpenClipboard(owner) != 0; });
    }
    ~OthersClipboard() { ::CloseClipboard(); }
    OthersClipboard(const OthersClipboard&) = delete;
    OthersClipboard& operator=(const OthersClipboard&) = delete;

    std::string Text() {
        const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
        if (data == nullptr) return {};
        const std::string text = vocafade::win32::Narrow(static_cast<const wchar_t*>(::GlobalLock(data)));
        ::GlobalUnlock(data);
        return text;
    }
    /// `end`: whether a zero closes it, as it should.
    void Offer(const std::wstring& text, bool end = true) {
        const std::size_t bytes = (text.size() + (end ? 1 : 0)) * sizeof(wchar_t);
        const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
        std::copy_n(text.c_str(), bytes / sizeof(wchar_t), static_cast<wchar_t*>(::GlobalLock(memory)));
        ::GlobalUnlock(memory);
        ::EmptyClipboard();
        ::SetClipboardData(CF_UNICODETEXT, memory);
    }
};

class WindowsTyping : public Desk {
  protected:
    void SetUp() override {
        Desk::SetUp();
        ASSERT_TRUE(field.Create(WS_CHILD | WS_VISIBLE, {10, 10, 210, 32}, &panel, 18001));
        field.SetFocus();
        ASSERT_TRUE(Until([this] { return user.Focus() == PanelId(); }));
    }
    std::string Text() {
        CString text;
        field.GetWindowText(text);
        return text.str();
    }
    bool Shows(const std::string& text) {
        return Until([&] { return Text() == text; });
    }
    void With(xcb_keysym_t modifier, xcb_keysym_t key) {
        user.KeyDown(modifier);
        user.Key(key);
        user.KeyUp(modifier);
    }

    CEdit field;
};

TEST_F(WindowsTyping, AltGrAndDeadKeysOfAGermanKeyboard) {
    user.TakeGermanKeyboard();
    Settle();
    user.Key(XK_z); // where others have y
    EXPECT_TRUE(Shows("z")) << Text();
    With(XK_ISO_Level3_Shift, XK_q);
    EXPECT_TRUE(Shows("z@")) << Text();
    With(XK_ISO_Level3_Shift, XK_e);
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC")) << Text();
    user.Key(XK_dead_acute);
    user.Key(XK_e);
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC\xC3\xA9")) << Text();
    user.Key(XK_dead_circumflex);
    user.Key(XK_space);
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC\xC3\xA9^")) << Text();
    With(XK_Control_L, XK_a); // AltGr is no control that stays
    user.Key(XK_BackSpace);
    EXPECT_TRUE(Shows("")) << Text();
}

TEST_F(WindowsTyping, TheClipboardIsSharedWithOtherPrograms) {
    field.SetWindowText("\xE5\xA3\xB0 1");
    With(XK_Control_L, XK_a);
    With(XK_Control_L, XK_c);
    Settle();
    EXPECT_EQ(OthersClipboard(host).Text(), "\xE5\xA3\xB0 1");
    OthersClipboard(host).Offer(L"\u6B4C 2\nsecond line");
    With(XK_Control_L, XK_v);
    EXPECT_TRUE(Shows("\xE6\xAD\x8C 2")) << Text();
    // What makes no sense in a field: far too long, control characters, half a character, no end.
    field.SetWindowText("");
    OthersClipboard(host).Offer(L"\x1B[2J\xD83D" + std::wstring(100'000, L'7'), false);
    With(XK_Control_L, XK_v);
    ASSERT_TRUE(Until([this] { return !Text().empty(); }));
    Settle();
    EXPECT_EQ(Text().substr(0, 3), "[2J");
    EXPECT_LE(Text().size(), 300U);
    EXPECT_EQ(Text().find('\x1B'), std::string::npos);
}

} // namespace
} // namespace vocafade::test
