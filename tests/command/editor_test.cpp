// SPDX-License-Identifier: MIT
// The subcommands that show the plug-in's editor.
#include "tests/command/command_fixture.h"
#include "tests/support/environment.h"
#include "tests/support/wait_for.h"
#include "tests/support/x_server.h"
#include "tests/support/x_user.h"

#include <X11/keysym.h>
#include <algorithm>

namespace vocafade::command {
namespace {

using test::XServer;
using test::XUser;

class EditorCommands : public CommandTest {
  protected:
    void SetUp() override {
        if (!XServer::IsInstalled()) GTEST_SKIP() << "Xvfb is not installed";
    }
    static std::string TitleOf(XUser& user, xcb_window_t window) {
        const auto asked =
            ::xcb_get_property(user.connection(), 0, window, user.Atom("_NET_WM_NAME"), XCB_ATOM_ANY, 0, 100);
        const std::unique_ptr<xcb_get_property_reply_t, void (*)(void*)> title(
            ::xcb_get_property_reply(user.connection(), asked, nullptr), &std::free);
        if (title == nullptr) return {};
        return {static_cast<const char*>(::xcb_get_property_value(title.get())),
                static_cast<std::size_t>(::xcb_get_property_value_length(title.get()))};
    }
    /// Waits until the user sees one more window than `before`, and something in it; answers it.
    static xcb_window_t WaitForWindow(XUser& user, std::size_t before) {
        xcb_window_t window = 0;
        EXPECT_TRUE(test::WaitFor([] {},
                                  [&] {
                                      const std::vector<xcb_window_t> windows = user.TopLevels();
                                      if (windows.size() <= before) return false;
                                      window = windows.back();
                                      const XUser::Bounds bounds = user.BoundsOf(window);
                                      const test::Picture seen =
                                          user.Look(window, 0, 0, bounds.width, bounds.height);
                                      return std::any_of(seen.pixels.begin(), seen.pixels.end(),
                                                         [](auto pixel) { return pixel != 0; });
                                  }));
        return window;
    }
};

TEST_F(EditorCommands, ScreenshotShowsTheSettings) {
    const XServer server;
    for (const char* value : {"64", "20"}) {
        const std::string name = std::string(value) + ".png";
        Succeeds({"screenshot", name, "--set", std::string("position=") + value});
        EXPECT_EQ(Content(At(name)).substr(0, 24), PngStart(477, 214));
    }
    EXPECT_NE(Content(At("64.png")), Content(At("20.png")));
    EXPECT_EQ(Run({"screenshot", "again.png", "--set", "position=20", "--program", "5"}).exitCode, 0);
    EXPECT_EQ(Content(At("again.png")), Content(At("20.png"))); // one picture for one state
}

TEST_F(EditorCommands, SayWhatIsWrong) {
    test::UnsetVariable("DISPLAY");
    Fails({"screenshot", "out.png"}, 1, "display");
    Fails({"edit"}, 1, "display");
    EXPECT_FALSE(Exists("out.png"));
    const XServer server;
    EXPECT_EQ(Run({"screenshot"}).exitCode, 2);
    EXPECT_EQ(Run({"edit", "--program", "65"}).exitCode, 2);
    EXPECT_EQ(Run({"edit", "--set", "lofreq=1"}).exitCode, 2);
    EXPECT_EQ(Run({"screenshot", "no/such/folder/out.png"}).exitCode, 1);
    EXPECT_EQ(Run({"screenshot", "out.png", "--plugin", "nothing.so"}).exitCode, 1);
    Succeeds({"edit", "--help"}, {"--program"});
    EXPECT_TRUE(Names().empty());
}

TEST_F(EditorCommands, EditOpensAWindowThatSavesAndCloses) {
    const XServer server;
    XUser user;
    const pid_t process = Start({"edit", "--program", "3", "--set", "lofreq=1000"});
    const xcb_window_t window = WaitForWindow(user, 0);
    ASSERT_NE(window, 0U);
    const XUser::Bounds bounds = user.BoundsOf(window);
    EXPECT_EQ(bounds.width, 477);
    EXPECT_EQ(bounds.height, 214);
    user.Click(bounds.x + 280, bounds.y + 15);
    const xcb_window_t dialog = WaitForWindow(user, 1);
    EXPECT_TRUE(test::WaitFor([] {}, [&] { return user.Focus() == dialog; }));
    user.Key(XK_Return);
    EXPECT_TRUE(test::WaitFor([] {}, [&] { return user.TopLevels().size() == 1; }));
    EXPECT_EQ(TitleOf(user, window), "Vocafade - 3: Empty");
    user.SetFocus(window);
    user.Key(XK_Page_Down);
    EXPECT_TRUE(test::WaitFor([] {}, [&] { return TitleOf(user, window) == "Vocafade - 4: Empty"; }));
    const auto onOffKey = [&] { return user.Look(window, 24, 7, 25, 21); };
    const test::Picture on = onOffKey();
    user.Click(bounds.x + 36, bounds.y + 15); // switches this one off, and does not save it
    EXPECT_TRUE(test::WaitFor([] {}, [&] { return onOffKey() != on; }));
    user.Key(XK_Page_Up);
    EXPECT_TRUE(test::WaitFor([] {}, [&] { return TitleOf(user, window) == "Vocafade - 3: Empty"; }));
    user.AskToClose(window);
    const RunResult ended = Finish(process);
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out, "Not saved: 4: Empty\n");
    EXPECT_EQ(std::filesystem::file_size(preferences_ / "VocafadeDef.fxb"), 3488U);
    Succeeds({"--list-parameters", "--program", "3"}, {"1000"});
}

TEST_F(EditorCommands, EditEndsWithItsDisplayOrBySignal) {
    auto server = std::make_unique<XServer>();
    {
        XUser user;
        const pid_t interrupted = Start({"edit"});
        ASSERT_NE(WaitForWindow(user, 0), 0U);
        ::kill(interrupted, SIGINT);
        EXPECT_EQ(Finish(interrupted).signal, SIGINT);
    }
    XUser user;
    const pid_t orphaned = Start({"edit"});
    ASSERT_NE(WaitForWindow(user, 0), 0U);
    server.reset();
    EXPECT_EQ(Finish(orphaned).signal, 0);
}

} // namespace
} // namespace vocafade::command
