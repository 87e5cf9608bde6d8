// SPDX-License-Identifier: MIT
// The texts that show where the pointer rests.
#include "tests/editor/editor_host.h"
#include "tests/support/wait_for.h"

namespace vocafade::test {
namespace {

class Tooltip : public OpenEditorTest {
  protected:
    /// The window that comes when the pointer rests at a place for long enough.
    xcb_window_t RestAt(CPoint place) {
        editor.MoveTo(place);
        WaitFor([this] { editor.Idle(); }, [this] { return Popup() != 0; });
        return Popup();
    }
    Picture PictureOf(xcb_window_t window) {
        const XUser::Bounds bounds = user.BoundsOf(window);
        editor.Settle();
        return user.Look(window, 0, 0, bounds.width, bounds.height);
    }
};

TEST_F(Tooltip, ShowsAfterARestTakesNothingAndGoesWithAnyPress) {
    user.SetFocus(editor.parent);
    const xcb_window_t tip = RestAt(kSave);
    ASSERT_NE(tip, 0U);
    EXPECT_EQ(user.Focus(), editor.parent);
    const Picture first = PictureOf(tip);
    editor.MoveTo({kSave.x + 4, kSave.y}); // within the key it stays
    EXPECT_EQ(Popup(), tip);
    editor.Ask(effSetProgram, 0, 1); // which it names
    editor.Settle();
    EXPECT_NE(PictureOf(Popup()), first);
    editor.MoveTo({kSave.x, kSave.y + 40}); // where there is nothing to tell
    EXPECT_EQ(Popup(), 0U);
    // A press on it is for what lies below, and that is the fader of OUTPUT.
    ASSERT_NE(RestAt({kSave.x + 20, kSave.y}), 0U);
    constexpr CPoint kCovered{420, 60};
    const XUser::Bounds bounds = user.BoundsOf(Popup());
    ASSERT_TRUE(CRect({bounds.x - 20, bounds.y - 30}, {bounds.width, bounds.height}).PtInRect(kCovered));
    user.Click(20 + kCovered.x, 30 + kCovered.y); // no idle in between
    editor.Settle();
    EXPECT_FALSE(Automated(kParameterOutput).empty());
    for (const int what : {1, 2, 3, 4}) {
        ASSERT_NE(RestAt({420, 100 + what}), 0U) << what; // the fader of OUTPUT
        if (what < 4) {
            user.Press(what);
            user.Release(what);
        } else {
            user.MoveTo(1, 1); // out of the window
        }
        EXPECT_TRUE(WaitFor([this] { editor.Settle(); }, [this] { return Popup() == 0U; })) << what;
    }
    ASSERT_NE(RestAt({kSave.x, kSave.y}), 0U);
    editor.Close();
    EXPECT_EQ(Popup(), 0U);
}

TEST_F(Tooltip, CanBeSwitchedOff) {
    const std::string folder = settings / "config/vocafade/settings";
    std::filesystem::create_directories(folder);
    WriteFile(folder + "/vocafade.settings", "[editor]\ntooltips=0\n");
    editor.Close();
    editor.Open();
    editor.MoveTo(kSave);
    for (int i = 0; i < 100; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        editor.Idle();
    }
    EXPECT_EQ(Popup(), 0U);
}

} // namespace
} // namespace vocafade::test
