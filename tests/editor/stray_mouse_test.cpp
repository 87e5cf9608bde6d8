// SPDX-License-Identifier: MIT
// Presses, releases and moves that are not meant for the panel, or that never reach it.
#include "tests/editor/panel_picture.h"

#include <chrono>
#include <thread>

namespace vocafade::test {
namespace {

constexpr CPoint kLoFreqFader{149, 85};
constexpr CPoint kHiFreqFader{237, 85};

class StrayMouse : public OpenEditorTest {
  protected:
    /// Two clicks at a place of the panel, idles in between.
    void DoubleClick(CPoint place) {
        editor.Click(place);
        editor.Click(place);
    }
};

TEST_F(StrayMouse, APressThatLeavesTheMenuDoesNothingElse) {
    editor.SetValue(3, 0.5f);
    // The upper edges of EDITED and SAVE, which the menu leaves uncovered.
    for (const CPoint place : {CPoint(230, 11), CPoint(280, 11)}) {
        editor.Click(kCopy);
        EXPECT_NE(Popup(), 0U);
        editor.Click(place);
        EXPECT_EQ(Popup(), 0U);
        EXPECT_EQ(editor.Value(3), 0.5f);
        EXPECT_TRUE(ShowsItsEffect(editor, true));
    }
    editor.Press(kCopy); // and as little does the release of the press that opened it
    editor.Key(XK_Escape);
    editor.Release({230, 11});
    EXPECT_EQ(editor.Value(3), 0.5f);
    editor.Click(kSave); // nor does one that was begun in a dialog
    const XUser::Bounds box = user.BoundsOf(Popup());
    editor.Press({box.x - 20 + 30, box.y - 30 + box.height - 10});
    editor.Key(XK_Escape);
    EXPECT_EQ(Popup(), 0U);
    editor.Release({230, 11});
    EXPECT_EQ(editor.Value(3), 0.5f);
    editor.Click({230, 11}); // the next click counts again
    EXPECT_EQ(editor.Display(3), "400.0");
}

TEST_F(StrayMouse, ADragEndsWhenItsReleaseIsLost) {
    for (const bool idlesOn : {true, false}) {
#if defined(_WIN32) // Wine never hears of what the pointer does outside of its windows
        if (!idlesOn) continue;
#endif
        editor.Press(kLoFreqFader);
        const float held = editor.Value(3);
        user.Hide(editor.parent); // which ends the server's hold on the mouse
        if (idlesOn) editor.Settle();
        user.Release();
        if (idlesOn) editor.Settle();
        user.Show(editor.parent);
        editor.MoveTo({149, 150});
        EXPECT_EQ(editor.Value(3), held);
    }
    editor.Press(kLoFreqFader);
    const float held = editor.Value(3);
    user.Hide(editor.parent);
    user.Release();
    user.MoveTo(20 + kHiFreqFader.x, 30 + kHiFreqFader.y);
    user.Show(editor.parent);
    user.Press(); // without a move before it
    editor.Settle();
    editor.Drag({237, 150});
    editor.Release({237, 150});
    EXPECT_EQ(editor.Value(3), held);
    EXPECT_NE(editor.Display(4), "10000.0");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(StrayMouse, AHeldSpinButtonStopsWhenItsReleaseIsLost) {
    const auto idleFor = [this](int milliseconds) {
        for (int i = 0; i < milliseconds / 20; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            editor.Idle();
        }
    };
    editor.Click(kLoFreq);
    const Picture open = editor.LookAtPanel();
    editor.Press({125 + 1 + 15 + 47, 188}); // the upper arrow
    ASSERT_NE(editor.LookAtPanel(), open);
    user.Hide(editor.parent);
    user.Release();
    idleFor(700); // longer than it waits before it repeats
    user.Show(editor.parent);
    editor.Settle();
    editor.Click({150, 192});
    editor.Key(XK_Return);
    EXPECT_EQ(editor.Display(3), "401.0");
}

TEST_F(StrayMouse, TheSecondPressOfADoubleClickIsNotForWhatLiesBeneath) {
    const auto nothingMoved = [this] {
        EXPECT_TRUE(host.Calls(audioMasterAutomate).empty());
        EXPECT_EQ(Popup(), 0U);
        EXPECT_TRUE(ShowsItsEffect(editor));
    };
    editor.Click(kCopy);
    ASSERT_NE(Popup(), 0U);
    DoubleClick(kLoFreqFader); // an item of the menu, above the LoFreq fader
    nothingMoved();
    editor.Click(kSave);
    ASSERT_NE(Popup(), 0U);
    const XUser::Bounds box = user.BoundsOf(Popup());
    DoubleClick(
        {box.x - 20 + box.width - 40, box.y - 30 + box.height - 25}); // Cancel, above the Position knob
    nothingMoved();
    editor.Click(kLoFreqFader); // a click elsewhere counts at once
    EXPECT_EQ(Automated(3).size(), 1U);
}

TEST_F(StrayMouse, AHiddenEditorLetsGoOfTheMouseAtOnceAndOfItsMenuWhenIdled) {
    editor.Click(kCopy);
    ASSERT_NE(Popup(), 0U);
    EXPECT_FALSE(user.MouseIsFree());
    user.Hide(editor.parent);
    EXPECT_TRUE(user.MouseIsFree()) << "also in a host that does not idle what nobody sees";
    user.Show(editor.parent);
    editor.Settle();
    EXPECT_EQ(Popup(), 0U);
    EXPECT_TRUE(ShowsItsEffect(editor));
    editor.Click(kCopy); // and it opens again
    EXPECT_FALSE(user.MouseIsFree());
    user.Hide(editor.parent);
    editor.Settle();
    EXPECT_EQ(user.TopLevels().size(), windowsBefore.size() - 1);
}

} // namespace
} // namespace vocafade::test
