// SPDX-License-Identifier: MIT
// The editor among other editors, and hosts that take things away.
#include "tests/editor/panel_picture.h"
#include "tests/support/process_counts.h"
#include "tests/support/wait_for.h"

#include <csignal>

namespace vocafade::test {
namespace {

/// The number of threads once those that are ending have ended.
std::size_t ThreadsLeft(std::size_t wanted) {
    WaitFor([] {}, [wanted] { return Threads() <= wanted; });
    return Threads();
}

using Meters = OpenEditorTest;

TEST_F(Meters, RiseWithTheSoundAndFallByAQuarterDecibelAnIdle) {
    editor.SetValue(0, 0.0f); // off: the output is the input
    editor.Settle();
    PanelState state = PanelState::Of(editor);
    state.modified = true;
    const auto shows = [&] {
        user.Sync();
        return SamePicture(editor.LookAtPanel(), ExpectedPanel(state));
    };
    const auto play = [&](float level, float left, float right) {
        editor.Play(level);
        editor.Idle();
        state.meters = {left, right, left, right};
    };
    play(0.5f, -6.0f, -12.0f); // left at half, right at a quarter of full scale
    for (int idles = 0; idles < 160; ++idles) {
        if (idles % 7 == 0) {
            ASSERT_TRUE(shows()) << idles;
        }
        editor.Idle();
        for (float& db : state.meters)
            db = std::max(db - 0.25f, -38.0f);
    }
    play(4.0f, 6.0f, 6.0f); // beyond the scale
    EXPECT_TRUE(shows());
    play(0.0f, -38.0f, -38.0f);
    EXPECT_TRUE(shows());
}

using Life = EditorTest;

TEST_F(Life, ClosedEditorAnswersHarmlessly) {
    HostedEditor editor(user);
    editor.Idle();
    editor.Ask(effEditDraw);
    editor.Close();
    EXPECT_FALSE(editor.Ask(effEditOpen) != 0); // inside no window
    EXPECT_TRUE(editor.Open());
    editor.Ask(effEditDraw);
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor));
    editor.Close();
    editor.Close();
    EXPECT_TRUE(user.Children(editor.parent).empty());
}

TEST_F(Life, TwoEditorsKeepToThemselves) {
    HostedEditor one(user, 20, 30);
    HostedEditor two(user, 20, 300);
    one.Show();
    two.Show();
    one.Press({150, 45 + 50}); // held in one ...
    two.Click({30, 10});       // (a release of the same mouse, so the first drag ends here)
    one.Settle();
    two.Enter(kLoFreq, "1000");
    one.Click(kCopy);
    two.Settle();
    one.Key(XK_Escape);
    two.Settle(); // the menu had covered it
    EXPECT_NE(one.Display(3), "1000.0");
    EXPECT_EQ(two.Display(3), "1000.0");
    EXPECT_EQ(one.Value(0), 1.0f);
    EXPECT_TRUE(ShowsItsEffect(one, true));
    EXPECT_TRUE(ShowsItsEffect(two, true));
    one.End();
    two.Click({245, 15}); // the other one lives on
    EXPECT_EQ(two.Display(3), "400.0");
    EXPECT_TRUE(ShowsItsEffect(two));
}

TEST_F(Life, WhatIsOpenGoesWithTheEditorTheEffectOrTheHostsWindow) {
    const std::size_t windows = user.TopLevels().size();
    const std::size_t threads = ThreadsLeft(1);
    enum class Gone { editor, effect, window, windowThenEditor };
    for (int i = 0; i < 16; ++i) {
        const Openable& open = kOpenables[i / 4];
        const auto gone = static_cast<Gone>(i % 4);
        SCOPED_TRACE("open: " + std::to_string(i / 4) + ", gone: " + std::to_string(i % 4));
        std::size_t files = 0;
        for (int attempt = 0; attempt < kTriesForFiles && OpenFiles() != files; ++attempt) {
            files = OpenFiles();
            {
                HostedEditor editor(user);
                editor.Show();
                editor.Open(open);
                if (gone == Gone::effect) editor.End();
                if (gone >= Gone::window) user.DestroyWindow(editor.parent);
                if (gone == Gone::window) editor.Settle();
                if (gone == Gone::editor || gone == Gone::windowThenEditor) editor.Close();
                if (editor.effect != nullptr) {
                    EXPECT_EQ(editor.Display(3), "400.0") << "nothing half typed was taken";
                    editor.Settle();
                    editor.Close();
                }
                if (gone == Gone::editor) {
                    EXPECT_TRUE(editor.Show()) << "and it opens again";
                    EXPECT_TRUE(ShowsItsEffect(editor));
                }
            }
            user.Sync();
        }
        EXPECT_EQ(user.TopLevels().size(), windows);
        EXPECT_EQ(OpenFiles(), files);
        EXPECT_EQ(ThreadsLeft(threads), threads);
    }
}

TEST_F(Life, HostMayCloseTheEditorFromInsideItsCallback) {
    HostedEditor editor(user);
    editor.Show();
    std::int32_t closingAt = 0;
    host.listen = [&](std::int32_t opcode) {
        if (opcode != closingAt) return;
        closingAt = 0;
        editor.Close();
        EXPECT_TRUE(editor.Open()); // some rebuild their window at once
    };
    for (const CPoint place : {CPoint(150, 100), CPoint(324, 150), CPoint(30, 10)}) { // fader, knob, switch
        closingAt = audioMasterAutomate;
        editor.Click(place);
        EXPECT_EQ(closingAt, 0);
        EXPECT_TRUE(ShowsItsEffect(editor, true));
    }
    closingAt = audioMasterEndEdit;
    editor.Enter(kLoFreq, "500");
    EXPECT_EQ(closingAt, 0);
    EXPECT_EQ(editor.Display(3), "500.0");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    closingAt = audioMasterUpdateDisplay;
    editor.Enter(kSave, "");
    EXPECT_EQ(closingAt, 0);
    EXPECT_TRUE(ShowsItsEffect(editor, false));
}

#if !defined(_WIN32)
TEST_F(Life, DisplayMayGoAway) {
    // The process must not even notice: nobody has asked for SIGPIPE to be ignored.
    ASSERT_NE(std::signal(SIGPIPE, SIG_DFL), SIG_ERR);
    const std::string shared = SharedServer().name();
    {
        XServer doomed;
        XUser there;
        HostedEditor editor(there);
        editor.Show();
        editor.Click(kSave);
        doomed.Kill();
        for (int i = 0; i < 10; ++i) {
            editor.Play(0.5f);
            editor.SetValue(3, 0.1f * static_cast<float>(i));
            editor.Idle();
        }
        editor.Close();
        EXPECT_FALSE(editor.Open());
        editor.Idle();
    }
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0) << "and no signal is left behind";
    UnsetVariable("DISPLAY");
    {
        HostedEditor editor(user);
        EXPECT_FALSE(editor.Open());
        editor.Idle();
        editor.Close();
    }
    SetVariable("DISPLAY", shared);
}
#endif

} // namespace
} // namespace vocafade::test
