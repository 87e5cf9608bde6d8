// SPDX-License-Identifier: MIT
// Names typed with the desktop's input method, whatever its server does.
#include "tests/editor/editor_host.h"
#include "tests/support/environment.h"
#include "tests/support/input_method_server.h"
#include "tests/support/wait_for.h"

namespace vocafade::test {
namespace {

struct AtScale2 {
    AtScale2() { SetVariable("VOCAFADE_SCALE", "2"); }
    ~AtScale2() { UnsetVariable("VOCAFADE_SCALE"); }
};

class InputMethods : AtScale2, public OpenEditorTest {
  protected:
    using Manner = InputMethodServer::Manner;

    InputMethods() { user.Resize(editor.parent, 2 * 477, 2 * 214); }

    void Click(CPoint place) { editor.Click({2 * place.x, 2 * place.y}); }
    bool Open() {
        Click(kSave);
        return Popup() != 0;
    }
    bool Until(const std::function<bool()>& done) {
        return WaitFor([this] { editor.Idle(); }, done);
    }
    /// Presses keys one after the other, as fast as the method answers.
    void Keys(const InputMethodServer& method, std::initializer_list<xcb_keysym_t> keys) {
        for (const xcb_keysym_t key : keys) {
            if (HasFatalFailure()) return;
            const int before = method.presses();
            user.Key(key);
            ASSERT_TRUE(Until([&] { return method.presses() > before; })) << key;
            editor.Settle();
        }
    }
    /// What any client can send: messages of the method's whose length is not there.
    void SendLies() {
        const xcb_atom_t protocol = user.Atom("_XIM_PROTOCOL");
        const xcb_window_t own = xcb_get_setup(user.connection())->resource_id_mask;
        for (const xcb_window_t window : user.Children(user.Root())) {
            if ((window & ~own) != (Popup() & ~own)) continue; // the server would believe it
            xcb_client_message_event_t lie{};
            lie.response_type = XCB_CLIENT_MESSAGE;
            lie.format = 32;
            lie.window = window;
            lie.type = protocol;
            lie.data.data32[0] = 1U << 20;
            lie.data.data32[1] = protocol;
            xcb_change_property(user.connection(), XCB_PROP_MODE_REPLACE, window, protocol, XCB_ATOM_STRING,
                                8, 4, "\x3C\0\xFF\xFF");
            user.Forge(window, lie);
        }
        editor.Settle();
    }
    std::string SavedName() const {
        const std::string bank = ReadFile(BankPath());
        return bank.size() < 208 ? "nothing was saved" : std::string(bank.substr(160 + 24, 24).c_str());
    }
    bool Closes() {
        return Until([this] { return Popup() == 0; });
    }
};

TEST_F(InputMethods, TypeNames) {
    InputMethodServer method;
    ASSERT_TRUE(Open());
    user.Key(XK_u); // typed before the connection stands, and composed all the same
    ASSERT_TRUE(Until([&] { return method.presses() == 1; }));
    Keys(method, {XK_Return});
    ASSERT_NE(Popup(), 0U) << "Return entered what was composed, no more";
    Keys(method, {XK_u, XK_Escape});
    ASSERT_NE(Popup(), 0U) << "Escape gave it up, no more";
    Keys(method, {XK_exclam, XK_e, XK_Return});
    SendLies();
    Keys(method, {XK_Home, XK_Left}); // the caret is told before the next key is sent
    const int home = method.caretX();
    Keys(method, {XK_End, XK_Right});
    EXPECT_GT(method.caretX(), home + 30) << "in the window's own pixels";
    EXPECT_NEAR(method.caretY(), user.BoundsOf(Popup()).height / 2.0, 40);
    user.Key(XK_Return);
    ASSERT_TRUE(Closes());
    EXPECT_EQ(SavedName(), "\x89\xCC!e") << "what cannot be stored was left out";

    ASSERT_TRUE(Open()); // as in the other fields, nothing goes in that has no room
    Keys(method, {XK_End});
    for (int i = 0; i < 12; ++i)
        Keys(method, {XK_u, XK_Return});
    Keys(method, {XK_1, XK_2});
    user.Key(XK_Return);
    ASSERT_TRUE(Closes());
    EXPECT_EQ(SavedName().size(), 23U);
    Click(kLoFreq); // numbers are typed as ever, and the method is not asked
    const int before = method.presses();
    editor.Type("500\r");
    EXPECT_EQ(editor.Display(3), "500.0");
    EXPECT_EQ(method.presses(), before);
}

TEST_F(InputMethods, MayDieInTheMiddle) {
    InputMethodServer method;
    ASSERT_TRUE(Open());
    ASSERT_NO_FATAL_FAILURE(Keys(method, {XK_u, XK_Return, XK_u}));
    method.Kill();
    user.Type("12\r");
    ASSERT_TRUE(Closes());
    EXPECT_EQ(SavedName(), "\x89\xCC"
                           "12");
    ASSERT_TRUE(Open()); // and is not missed
    editor.Type("3\r");
    EXPECT_EQ(SavedName(), "3");
}

TEST_F(InputMethods, ThatAreSilentLoseNoKey) {
    for (const Manner manner : {Manner::fallsSilent, Manner::isSilent}) {
        const InputMethodServer method(manner);
        ASSERT_TRUE(Open());
        user.Type("1u2\r");
        ASSERT_TRUE(Closes());
        EXPECT_EQ(SavedName(), "1u2");
        EXPECT_EQ(method.presses(), 0);
        std::filesystem::remove(BankPath());
    }
}

} // namespace
} // namespace vocafade::test
