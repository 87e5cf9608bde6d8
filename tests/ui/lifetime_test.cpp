// SPDX-License-Identifier: MIT
// What hosts do to their windows, displays that go away, and editors that open and close all day.

#include "tests/support/counted_memory.h"
#include "tests/ui/desk.h"

#include <X11/keysym.h>
#include <csignal>
#include <filesystem>
#include <sys/wait.h>

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

TEST_F(Hosts, MayDestroyTheirWindowFirst) {
    CEdit field;
    ASSERT_TRUE(field.Create(WS_CHILD | WS_VISIBLE, {10, 10, 110, 30}, &panel, 5));
    field.SetFocus();
    panel.SetTimer(1, 5);
    CMenu menu;
    menu.AppendMenu(MF_STRING, 1, "Item");
    bool closed = false;
    ASSERT_TRUE(menu.TrackPopupMenu(0, 10, 10, &panel, [&] { closed = true; }));
    Settle();
    ASSERT_NE(TopWindow(), host);
    user.DestroyWindow(host);
    EXPECT_TRUE(Until([this] { return TopWindow() == 0; })) << "the menu has gone, too";
    EXPECT_FALSE(closed);
    panel.Invalidate();
    {
        CClientDC dc(&panel);
        dc.FillSolidRect({0, 0, 50, 50}, RGB(1, 1, 1));
    }
    EXPECT_FALSE(menu.TrackPopupMenu(0, 10, 10, &panel));
    panel.ShowWindow(SW_HIDE);
    Settle();
    EXPECT_TRUE(frame.IsDisplayAlive());
    EXPECT_TRUE(panel.DestroyWindow());
    frame.DetachHost();
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

TEST_F(Hosts, SurviveTheirDisplayGoingAway) {
    // The process must not even notice: nobody has asked for SIGPIPE to be ignored.
    ASSERT_NE(std::signal(SIGPIPE, SIG_DFL), SIG_ERR);
    panel.SetTimer(1, 5);
    CMenu menu;
    menu.AppendMenu(MF_STRING, 1, "Item");
    ASSERT_TRUE(menu.TrackPopupMenu(0, 10, 10, &panel));
    CDC shot;
    shot.CreateBitmapDC(460, 210);
    server.Kill();
    for (int i = 0; i < 50; ++i) {
        panel.Invalidate();
        CClientDC dc(&panel);
        dc.FillSolidRect({0, 0, 460, 210}, RGB(static_cast<unsigned>(i), 0, 0));
        frame.Idle();
    }
    EXPECT_FALSE(frame.IsDisplayAlive());
    EXPECT_TRUE(Until([this] { return panel.Count(WM_TIMER) > 0; })) << "timers and messages still come";
    EXPECT_FALSE(menu.TrackPopupMenu(0, 10, 10, &panel));
    Recorder child;
    child.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {0, 0, 20, 20}, &panel, 1);
    child.SetFocus();
    panel.DestroyWindow();
    frame.DetachHost();
    EXPECT_FALSE(frame.AttachHost(Native(host)));
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0) << "and no signal is left behind";
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

/// Entries of a folder of the process in /proc.
int Entries(const char* folder) {
    const std::filesystem::directory_iterator all(std::string("/proc/self/") + folder);
    return static_cast<int>(std::distance(begin(all), end(all)));
}

TEST_F(Hosts, OpenAndCloseTwoHundredTimesWithoutALoss) {
    const auto once = [this] {
        CFrameWnd opened;
        Recorder window;
        ASSERT_TRUE(opened.AttachHost(Native(host)));
        ASSERT_TRUE(window.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {0, 0, 460, 210}, &opened, 0));
        window.SetTimer(1, 1);
        CEdit field;
        ASSERT_TRUE(field.Create(WS_CHILD | WS_VISIBLE, {10, 10, 110, 30}, &window, 5));
        field.SetWindowText("12.5");
        field.SetFocus();
        CFont font;
        font.CreatePointFont(9, "Osaka");
        {
            CClientDC dc(&window);
            dc.SelectObject(&font);
            dc.TextOut(1, 1, "\xE6\xAD\x8C");
        }
        CMenu menu;
        menu.AppendMenu(MF_STRING, 1, "Item");
        menu.TrackPopupMenu(0, 10, 10, &window);
        AfxMessageBox("Still here when the editor closes");
        opened.Idle();
        opened.Idle();
        window.DestroyWindow();
        opened.DetachHost();
        user.TakeHostKeys(); // the host's own client keeps what nobody fetches
    };
    const int clients = user.Clients() - 1; // without the editor of `SetUp`
    frame.DetachHost();
    for (int i = 0; i < 20; ++i)
        once();
    ASSERT_TRUE(WaitFor([] {}, [&] { return user.Clients() == clients; }));
    const std::size_t windows = user.Children(user.Root()).size() + user.Children(host).size();
    const int threads = Entries("task");
    const int descriptors = Entries("fd");
    const long blocks = LiveBlocks();
    for (int i = 0; i < 200; ++i)
        once();
    EXPECT_TRUE(WaitFor([] {}, [&] { return user.Clients() == clients; })) << "connections are left";
    EXPECT_EQ(user.Children(user.Root()).size() + user.Children(host).size(), windows);
    EXPECT_EQ(Entries("task"), threads);
    EXPECT_EQ(Entries("fd"), descriptors);
    // The libraries' caches move a little; one small object an opening would be two hundred.
    EXPECT_LT(LiveBlocks() - blocks, 40);
    EXPECT_EQ(user.Focus(), host);
}

} // namespace
} // namespace vocafade::test
