// SPDX-License-Identifier: MIT
// The editor at other scales than 1: where things are hit, and who decides.
#include "tests/editor/panel_picture.h"
#include "tests/support/environment.h"
#include "ui/platform/scale.h"

#include <functional>
#include <limits>

namespace vocafade::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

class Scale : public EditorTest {
  protected:
    Scale() {
        host.resize = [this](int width, int height) {
            if (!makesRoom) return false;
            for (HostedEditor* editor : open)
                user.Resize(editor->parent, width, height);
            return true;
        };
    }
    ~Scale() override {
        UnsetVariable("VOCAFADE_SCALE");
        user.PublishSettings(DoubleClickSettings(400));
    }
    /// Does what a host does: asks for the size, makes the window as large, opens.
    void Show(HostedEditor& editor) {
        const CSize size = editor.Size();
        user.Resize(editor.parent, size.cx, size.cy);
        ASSERT_TRUE(editor.Show());
        open = {&editor};
    }
    static void TellScale(HostedEditor& editor, float scale) {
        EXPECT_EQ(editor.Ask(effVendorSpecific, kContentScaleExtension, kContentScaleValue, nullptr, scale),
                  1);
    }
    Picture LookAtAll(HostedEditor& editor) {
        const CSize size = editor.Size();
        return editor.Look({{0, 0}, size});
    }

    std::vector<HostedEditor*> open;
    bool makesRoom = true;
};

class HitAt : public Scale, public testing::WithParamInterface<double> {
  protected:
    HitAt() { SetVariable("VOCAFADE_SCALE", std::to_string(GetParam())); }
    /// `hits`: whether a click at that pixel of the screen reaches what the rectangle, in the panel's pixels, is for.
    static void ExpectHits(const CRect& logical, const std::function<bool(CPoint)>& hits) {
        const CRect r = platform::ToDevice(logical, GetParam());
        for (const int x : {r.left, r.right - 1})
            for (const int y : {r.top, r.bottom - 1})
                EXPECT_TRUE(hits({x, y})) << x << ", " << y;
        for (const CPoint outside : {CPoint(r.left - 1, r.top - 1), CPoint(r.right, r.bottom)})
            EXPECT_FALSE(hits(outside)) << outside.x << ", " << outside.y;
    }
};

INSTANTIATE_TEST_SUITE_P(Scales, HitAt, testing::Values(1.25, 2.0, 3.0));

TEST_P(HitAt, EveryControlIsHitWhereItIsDrawn) {
    HostedEditor editor(user);
    Show(editor);
    EXPECT_EQ(editor.Size(), platform::ToDevice(CSize{477, 214}, GetParam()));
    const std::size_t windows = user.TopLevels().size();
    for (const layout::PanelControl& control : layout::kControls) {
        SCOPED_TRACE(control.parameter);
        ExpectHits(control.rect, [&](CPoint at) {
            if (control.parameter != kParameterOnOff) editor.SetValue(control.parameter, 0.4f);
            editor.Idle();
            Forget();
            editor.Click(at);
            return !Automated(control.parameter).empty();
        });
        if (control.readout.IsRectEmpty()) continue;
        ExpectHits(control.readout, [&](CPoint at) {
            user.SetFocus(editor.parent);
            editor.Click(at);
            const bool opened = user.Focus() != editor.parent;
            editor.Key(XK_Escape);
            return opened;
        });
    }
    for (const CRect& key : {layout::kCopyRect, layout::kSaveRect}) {
        ExpectHits(key, [&](CPoint at) {
            editor.Click(at);
            const bool opened = user.TopLevels().size() > windows;
            editor.Key(XK_Escape);
            return opened;
        });
    }
    ExpectHits(layout::kModifyRect, [&](CPoint at) {
        editor.SetValue(3, 0.4f);
        editor.Settle();
        editor.Click(at);
        return editor.Display(3) == "400.0";
    });
}

#if !defined(_WIN32) // where a program has one scale, and blending another rounding
TEST_F(Scale, ComesFromTheUserElseTheHostElseTheDesktopAndIsFollowedWhileOpen) {
    HostedEditor editor(user);
    EXPECT_EQ(editor.Size(), (CSize{477, 214}));
    user.PublishSettings(NumberSetting("Xft/DPI", 144 * 1024));
    Show(editor);
    EXPECT_EQ(editor.Size(), (CSize{716, 321}));
    const Picture before = LookAtAll(editor);
    TellScale(editor, 2.0f); // at the next idle, when the host has made room
    EXPECT_EQ(editor.Size(), (CSize{716, 321}));
    editor.Settle();
    EXPECT_EQ(editor.Size(), (CSize{954, 428}));
    const Picture grown = LookAtAll(editor);
    makesRoom = false;
    TellScale(editor, 3.0f);
    editor.Settle();
    EXPECT_EQ(editor.Size(), (CSize{954, 428})) << "without room it stays as it is";
    EXPECT_TRUE(SamePicture(LookAtAll(editor), grown, {0, 0, 954, 428}));
    makesRoom = true;
    TellScale(editor, 0.0f); // nothing: the desktop counts again
    editor.Settle();
    EXPECT_TRUE(SamePicture(LookAtAll(editor), before, {0, 0, 716, 321}));
    editor.Click(kCopy); // not where the key is at this scale
    user.PublishSettings(NumberSetting("Xft/DPI", 192 * 1024));
    editor.Settle();
    EXPECT_TRUE(SamePicture(LookAtAll(editor), grown, {0, 0, 954, 428}));
    user.PublishSettings(DoubleClickSettings(400));
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor)) << "at scale 1, pixel for pixel";
    SetVariable("VOCAFADE_SCALE", "2");
    HostedEditor users(user, 20, 300);
    TellScale(users, 3.0f);
    EXPECT_EQ(users.Size(), (CSize{954, 428}));
}

TEST_F(Scale, OfOneShowsWhatWasShownBeforeThereWereOthers) {
    HostedEditor editor(user);
    editor.SetValue(kParameterLoFreq, (250.0f - 20.0f) / 19980.0f);
    editor.SetValue(kParameterHiFreq, (8000.0f - 20.0f) / 19980.0f);
    Show(editor);
    for (int i = 0; i < 50; ++i)
        editor.Play(0.35f, 1024);
    editor.Idle();
    const Picture then = PictureIn(VOCAFADE_PANEL_AT_SCALE_1);
    const Picture now = editor.LookAtPanel();
    for (int y = 0; y < 182; ++y) { // above the read-outs, whose digits are of the machine's fonts
        for (int x = 0; x < 477; ++x) {
            if (layout::kModifyRect.PtInRect({x, y})) continue; // whose unlit letters were not legible
            ASSERT_EQ(now.at(x, y), then.at(x, y)) << x << ", " << y;
        }
    }
}
#endif

TEST_F(Scale, ThatIsNoneIsPassedOverAndOneThatIsTooLargeIsTheLargest) {
    for (const char* text : {"", "0", "-1", "nan", "inf", "abc", "2x", "1e999"}) {
        SetVariable("VOCAFADE_SCALE", text);
        HostedEditor editor(user);
        EXPECT_EQ(editor.Size(), (CSize{477, 214})) << text;
    }
    SetVariable("VOCAFADE_SCALE", "1000");
    EXPECT_EQ(HostedEditor(user).Size(), (CSize{1908, 856}));
    UnsetVariable("VOCAFADE_SCALE");
    HostedEditor editor(user);
    Show(editor);
    for (int round = 0; round < 3; ++round) {
        for (const float scale : {0.0f, kNan, 1000.0f, -2.0f, kInfinite, 1e-30f, 1.1f, 2.6f, 3.9f}) {
            TellScale(editor, scale);
            if (round == 1) editor.Press({150, 20}); // a menu, a control, or nothing
            editor.Idle();
            user.Release();
            const CSize size = editor.Size();
            EXPECT_TRUE(size.cx >= 477 && size.cx <= 1908) << scale;
        }
    }
    for (const std::uint32_t dots : {0U, 1U, 0xFFFFFFFFU, 0x7FFFFFFFU}) {
        user.PublishSettings(NumberSetting("Xft/DPI", dots));
        editor.Settle();
    }
    user.PublishSettings(DoubleClickSettings(400));
    TellScale(editor, 0.0f);
    editor.Key(XK_Escape);
    editor.Click({5, 5});
    EXPECT_EQ(editor.Size(), (CSize{477, 214}));
    EXPECT_TRUE(ShowsItsEffect(editor, editor.Display(3) != "400.0"));
}

} // namespace
} // namespace vocafade::test
