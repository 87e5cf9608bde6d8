// SPDX-License-Identifier: MIT
// The mouse on the panel's controls, through the binary interface: what the host is told, what the effect
// holds and what is to be seen.
#include "tests/editor/panel_picture.h"

#include <cmath>

namespace vocafade::test {
namespace {

constexpr CRect kModified{216, 10, 259, 26};

float Tapered(int row) { return static_cast<float>((std::pow(10.0, (121.0 - row) / 109.0) - 1.0) / 9.0); }

using Panel = OpenEditorTest;

TEST_F(Panel, FadersFollowTheMouseUntilItIsReleased) {
    int faders = 0;
    for (const layout::PanelControl& fader : layout::kControls) {
        if (fader.picture != resource::kFaderTrack) continue;
        ++faders;
        SCOPED_TRACE(fader.parameter);
        Forget();
        const int x = fader.rect.left + 8;
        editor.Press({x, 45 + 40});
        EXPECT_EQ(editor.Value(fader.parameter), Tapered(40));
        EXPECT_TRUE(ShowsItsEffect(editor, true));
        editor.Drag({x, 45 + 66});
        EXPECT_TRUE(ShowsItsEffect(editor, true));
        editor.Drag({x + 200, 45 + 66}); // only the height counts
        editor.Drag({x + 200, -10});
        EXPECT_EQ(editor.Value(fader.parameter), 1.0f);
        editor.Release({x, 300}); // outside of the panel
        editor.MoveTo({x, 45 + 60});
        EXPECT_EQ(Automated(fader.parameter), (std::vector<float>{Tapered(40), Tapered(66), 1.0f, 0.0f}));
        EXPECT_EQ(host.Calls(audioMasterAutomate).size(), 4U); // and of no other parameter
        EXPECT_TRUE(ShowsItsEffect(editor, true));
    }
    EXPECT_EQ(faders, 4);
}

TEST_F(Panel, ShowsTheEffectAsSoonAsItIsOpen) {
    EXPECT_TRUE(ShowsItsEffect(editor));
    EXPECT_EQ(editor.Size(), (CSize{477, 214}));
    const std::vector<xcb_window_t> children = user.Children(editor.parent);
    ASSERT_EQ(children.size(), 1U);
    EXPECT_EQ(user.BoundsOf(children[0]), (XUser::Bounds{20, 30, 477, 214}));
    EXPECT_NE(editor.Ask(effEditOpen, 0, 0, editor.ParentPointer()), 0); // a second time changes nothing
    EXPECT_EQ(user.Children(editor.parent), children);
}

TEST_F(Panel, KnobTurnsWithThePointer) {
    editor.Press({309, 164});
    EXPECT_FLOAT_EQ(editor.Value(5), 0.2f);
    EXPECT_EQ(editor.Display(5), "25.4");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Drag({324, 20}); // far above the panel's knob
    EXPECT_FLOAT_EQ(editor.Value(5), 0.5f);
    editor.Drag({400, 164});
    editor.Release({400, 164});
    EXPECT_FLOAT_EQ(editor.Value(5), 0.8f);
    EXPECT_EQ(Automated(5).back(), editor.Value(5));
    EXPECT_GE(Automated(5).size(), 4U); // the release reports once more
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Panel, OnOffSwitchesAtEachPressDoubleClicksIncluded) {
    editor.Press({30, 10});
    EXPECT_EQ(editor.Display(0), "OFF");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Release({30, 10});
    editor.Click({30, 10});
    editor.Click({30, 10});
    EXPECT_EQ(Automated(0), (std::vector<float>{0.0f, 1.0f, 0.0f}));
    editor.Click({49, 10}); // just beside it
    EXPECT_EQ(Automated(0).size(), 3U);
}

TEST_F(Panel, OnOffWithShiftRestoresTheFactoryProgramAndWithControlNothingMore) {
    editor.SetValue(3, 0.5f);
    const auto clickWith = [this](xcb_keysym_t key) {
        user.KeyDown(key); // no idle in between: the keys' state is that of the press
        user.Click(20 + 30, 30 + 10);
        user.KeyUp(key);
        editor.Settle();
    };
    clickWith(XK_Control_L);
    EXPECT_EQ(editor.Value(0), 0.0f);
    EXPECT_EQ(editor.Value(3), 0.5f);
    EXPECT_TRUE(host.Calls(audioMasterUpdateDisplay).empty());
    clickWith(XK_Shift_L);
    EXPECT_EQ(editor.Value(0), 1.0f);
    EXPECT_EQ(editor.Display(3), "400.0");
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);
    EXPECT_TRUE(ShowsItsEffect(editor));
}

TEST_F(Panel, OtherButtonsAndPlacesDoNothing) {
    editor.Click({150, 100}, 3);
    editor.Click({100, 100});
    editor.Click({5, 5});
    editor.Settle();
    EXPECT_TRUE(host.Calls(audioMasterAutomate).empty());
    EXPECT_TRUE(ShowsItsEffect(editor));
}

TEST_F(Panel, TheWheelStepsByWhatOneHearsAndTheMiddleButtonSetsTheDefault) {
    constexpr int kMiddle = 2, kUp = 4, kDown = 5;
    for (const CPoint output : {CPoint(420, 60), kOutput}) { // the fader, and its read-out
        editor.Click(output, kUp);
        editor.Click(output, kUp);
        EXPECT_EQ(editor.Display(1), "1.0");
        editor.Click(output, kDown);
        EXPECT_EQ(editor.Display(1), "0.5");
        user.KeyDown(XK_Shift_L);
        for (int i = 0; i < 10; ++i)
            editor.Click(output, kDown);
        user.KeyUp(XK_Shift_L);
        EXPECT_EQ(editor.Display(1), "0.0");
        EXPECT_EQ(Automated(1).size(), 13U);
        EXPECT_EQ(Automated(1).back(), editor.Value(1));
        Forget();
    }
    for (int i = 0; i < 36; ++i)
        editor.Click(kLoFreq, kUp);
    EXPECT_NEAR(std::stod(editor.Display(3)), 800.0, 0.2) << "36 notches are an octave";
    editor.Click({324, 164}, kDown);
    EXPECT_EQ(editor.Display(5), "63.0");
    editor.Click({324, 164}, kUp);
    EXPECT_EQ(editor.Display(5), "64.0");
    editor.Click(kSwitch, kUp); // which the wheel does not move
    EXPECT_EQ(editor.Value(0), 1.0f);
    for (int i = 0; i < 20; ++i)
        editor.Click(kOutput, kUp);
    EXPECT_EQ(editor.Display(1), "6.0") << "the end of its range";
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    for (const CPoint control : {CPoint(420, 60), kLoFreq})
        editor.Click(control, kMiddle);
    EXPECT_EQ(editor.Display(1), "0.0");
    EXPECT_EQ(editor.Display(3), "400.0");
    EXPECT_EQ(Automated(1).back(), editor.Value(1));
    editor.Press({420, 100}); // during a drag neither does anything
    const float held = editor.Value(1);
    editor.Click({420, 100}, kUp);
    editor.Click({420, 100}, kMiddle);
    EXPECT_EQ(editor.Value(1), held);
    user.Release();
}

TEST_F(Panel, HostsChangesShowAtTheNextIdle) {
    const std::array<float, 6> values{0.0f, 0.9f, 0.1f, 0.7f, 0.3f, 0.05f};
    for (std::int32_t i = 0; i < 6; ++i)
        editor.SetValue(i, values[static_cast<std::size_t>(i)]);
    editor.Idle();
    user.Sync();
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    EXPECT_TRUE(host.Calls(audioMasterAutomate).empty()); // nothing is told back
    editor.SetValue(4, 7.0f);                             // a host beyond the range
    editor.SetValue(99, 0.5f);
    editor.Settle();
    EXPECT_EQ(editor.Display(4), "20000.0");
    editor.SetValue(4, 1.0f);
    editor.Ask(effEditDraw); // shows it without an idle
    user.Sync();
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Ask(effMainsChanged, 0, 0); // suspended: shown as off
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Panel, ProgramsAreFollowedAndTheLampSaysWhatChanged) {
    editor.Ask(effSetProgram, 0, 7);
    editor.SetValue(3, 0.25f);
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Ask(effSetProgram, 0, 8);
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, false));
    editor.Ask(effSetProgram, 0, 7);
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    // A click on the lamp brings the stored program back; the host reads everything again.
    Forget();
    editor.Click({kModified.left + 3, kModified.top + 3});
    EXPECT_EQ(editor.Display(3), "400.0");
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);
    EXPECT_TRUE(ShowsItsEffect(editor, false));
}

} // namespace
} // namespace vocafade::test
