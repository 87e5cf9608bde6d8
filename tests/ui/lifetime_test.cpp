// SPDX-License-Identifier: MIT
// What hosts do to their windows.

#include "tests/ui/desk.h"

namespace vocafade::test {
namespace {

using Hosts = Desk;

TEST_F(Hosts, MayHideResizeAndReparentTheirWindow) {
    user.Hide(host);
    panel.color = RGB(1, 200, 3);
    panel.Invalidate();
    Settle();
    user.Show(host);
    EXPECT_TRUE(Until([this] { return user.Pixel(300, 200) == 0x01C803; }))
        << "drawn while hidden, shown after";
    user.Resize(host, 700, 350);
    EXPECT_TRUE(Until([this] { return frame.bounds() == CRect(0, 0, 700, 350); }));
    EXPECT_EQ(panel.bounds(), CRect(0, 0, 460, 210));
    const xcb_window_t outer = user.MakeWindow(300, 400, 600, 400);
    user.Reparent(host, outer, 20, 30);
    panel.seen.clear();
    EXPECT_TRUE(Until([this] { return user.Pixel(330, 440) == 0x01C803; }));
    user.Click(340, 450);
    ASSERT_TRUE(Until([this] { return panel.Count(WM_LBUTTONDOWN) == 1; }));
    // A menu opens where the panel is now.
    CMenu menu;
    menu.AppendMenu(MF_STRING, 1, "Item");
    ASSERT_TRUE(menu.TrackPopupMenu(0, 10, 10, &panel));
    ASSERT_TRUE(Until([&] { return TopWindow() != outer; }));
    EXPECT_EQ(user.BoundsOf(TopWindow()).x, 330);
    EXPECT_EQ(user.BoundsOf(TopWindow()).y, 440);
}

TEST_F(Hosts, MayOpenTheEditorBeforeTheirWindowShows) {
    const xcb_window_t late = user.MakeWindow(100, 500, 500, 300, false);
    CFrameWnd other;
    Recorder second;
    ASSERT_TRUE(other.AttachHost(Native(late)));
    EXPECT_EQ(other.bounds(), CRect(0, 0, 500, 300));
    ASSERT_TRUE(second.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {0, 0, 200, 100}, &other, 0));
    CEdit field;
    ASSERT_TRUE(field.Create(WS_CHILD | WS_VISIBLE, {10, 10, 110, 30}, &second, 5));
    field.SetFocus();
    for (int i = 0; i < 5; ++i)
        other.Idle();
    EXPECT_EQ(user.Focus(), host) << "a window that nobody sees takes no keyboard";
    user.Show(late);
    const auto step = [&] { other.Idle(); };
    EXPECT_TRUE(WaitFor(step, [&] { return user.Pixel(250, 550) == 0x0A78C8; }));
    // Two editors at once know nothing of each other.
    user.Click(250, 550);
    ASSERT_TRUE(WaitFor(step, [&] { return second.Count(WM_LBUTTONDOWN) == 1; }));
    Settle();
    EXPECT_EQ(panel.Count(WM_LBUTTONDOWN), 0);
    EXPECT_FALSE(CFrameWnd().AttachHost(Native(0x7FFFFFF))) << "no such window";
    EXPECT_FALSE(CFrameWnd().AttachHost(nullptr));
}

TEST_F(Hosts, MayIdleSlowlyOrQuickly) {
    for (const int hertz : {15, 60}) {
        panel.seen.clear();
        for (int i = 0; i < hertz; ++i) { // a second of dragging
            if (i == 2) user.Press();
            for (int j = 0; j < 120 / hertz; ++j)
                user.MoveTo(150 + i * 2, 150 + j);
            if (i == hertz - 2) user.Release();
            frame.Idle();
        }
        Settle();
        EXPECT_EQ(panel.Count(WM_LBUTTONDOWN), 1);
        EXPECT_EQ(panel.Count(WM_LBUTTONUP), 1);
        EXPECT_GE(panel.Count(WM_MOUSEMOVE), hertz / 2);
        EXPECT_LE(panel.Count(WM_MOUSEMOVE), hertz * 3) << "of motions that no idle fetched, the last counts";
    }
}

} // namespace
} // namespace vocafade::test
