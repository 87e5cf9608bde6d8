// SPDX-License-Identifier: MIT
// Windows in a host's window: messages, painting, timers, focus.

#include "tests/ui/desk.h"

#include <X11/keysym.h>
#include <chrono>
#include <thread>

namespace vocafade::test {
namespace {

using Windows = Desk;

TEST_F(Windows, ASecondQuickPressNearbyIsADoubleClick) {
    const auto presses = [this] { return panel.Order({WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}); };
    for (int i = 0; i < 3; ++i)
        user.Click(150, 130);
    ASSERT_TRUE(Until([this] { return panel.Count(WM_LBUTTONUP) == 3; }));
    EXPECT_EQ(presses(), (std::vector<UINT>{WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_LBUTTONDBLCLK}));
    user.Click(190, 130); // quick, but elsewhere
    ASSERT_TRUE(Until([this] { return panel.Count(WM_LBUTTONUP) == 4; }));
    EXPECT_EQ(presses().back(), WM_LBUTTONDOWN);
    user.PublishSettings(DoubleClickSettings(10));
    Settle();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    user.Click(190, 130); // and there, but not quick
    ASSERT_TRUE(Until([this] { return panel.Count(WM_LBUTTONUP) == 5; }));
    EXPECT_EQ(presses().back(), WM_LBUTTONDOWN);
}

TEST_F(Windows, ACapturedMouseStaysWithItsWindowAlsoOutside) {
    Recorder child;
    ASSERT_TRUE(child.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {20, 20, 120, 80}, &panel, 7));
    user.MoveTo(130, 130); // in the child, which begins at (120, 120) of the screen
    user.Press();
    ASSERT_TRUE(Until([&] { return child.Count(WM_LBUTTONDOWN) == 1; }));
    EXPECT_EQ(panel.Count(WM_LBUTTONDOWN), 0);
    EXPECT_EQ(child.SetCapture(), nullptr);
    child.seen.clear();
    user.MoveTo(40, 50); // left of and above everything, outside of the host's window
    user.Release();
    ASSERT_TRUE(Until([&] { return child.Count(WM_LBUTTONUP) == 1; }));
    EXPECT_EQ(child.seen.back().point(), CPoint(-80, -70));
    EXPECT_EQ(panel.Count(WM_LBUTTONUP), 0);
    child.ReleaseCapture();
    EXPECT_EQ(child.Count(WM_CAPTURECHANGED), 1);
    user.MoveTo(400, 200);
    ASSERT_TRUE(Until([&] { return panel.Count(WM_MOUSEMOVE) > 0; }));
    // A window that goes away takes its capture with it; a disabled or hidden one gets nothing.
    child.SetCapture();
    child.DestroyWindow();
    EXPECT_EQ(panel.GetCapture(), nullptr);
    EXPECT_EQ(panel.Count(WM_LBUTTONDOWN), 0);
}

TEST_F(Windows, PaintsOnlyWhatWasInvalidatedOnceAnIdle) {
    Settle();
    EXPECT_EQ(panel.Count(WM_PAINT), 0) << "nothing changed";
    const CRect dirty(10, 20, 40, 50);
    panel.color = RGB(250, 10, 10);
    panel.InvalidateRect(&dirty);
    panel.InvalidateRect(&dirty);
    EXPECT_EQ(panel.Count(WM_PAINT), 0) << "painting waits for the idle";
    frame.Idle();
    EXPECT_EQ(panel.Order({WM_ERASEBKGND, WM_PAINT}), (std::vector<UINT>{WM_ERASEBKGND, WM_PAINT}));
    ASSERT_EQ(panel.painted.size(), 1U);
    EXPECT_EQ(panel.painted[0], dirty);
    EXPECT_TRUE(panel.updateRect().IsRectEmpty());
    EXPECT_TRUE(Until([this] { return user.Pixel(115, 125) == 0xFA0A0A; }));
    EXPECT_EQ(user.Pixel(109, 125), 0x0A78C8U) << "outside of the update rectangle nothing is drawn";
    // Sent by hand it draws everything, and leaves nothing to be done.
    panel.Invalidate();
    panel.SendMessage(WM_PAINT);
    EXPECT_EQ(panel.painted.back(), CRect(0, 0, 460, 210));
    panel.seen.clear();
    Settle();
    EXPECT_EQ(panel.Count(WM_PAINT), 0);
    EXPECT_EQ(user.Pixel(300, 200), 0xFA0A0AU);
}

TEST_F(Windows, DrawingOutsideOfPaintShowsAtOnceAndSparesChildren) {
    Recorder child;
    child.color = RGB(0, 250, 0);
    ASSERT_TRUE(child.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {50, 50, 100, 100}, &panel, 7));
    ASSERT_TRUE(Until([this] { return user.Pixel(160, 160) == 0x00FA00; }));
    {
        CClientDC dc(&panel);
        dc.FillSolidRect({0, 0, 460, 210}, RGB(9, 9, 9));
    }
    EXPECT_TRUE(WaitFor([] {}, [this] { return user.Pixel(140, 140) == 0x090909; })) << "without any idle";
    EXPECT_EQ(user.Pixel(160, 160), 0x00FA00U);
    {
        CClientDC dc(&child);
        dc.FillSolidRect({-20, -20, 500, 500}, RGB(1, 2, 3));
    }
    EXPECT_TRUE(WaitFor([] {}, [this] { return user.Pixel(160, 160) == 0x010203; }));
    EXPECT_EQ(user.Pixel(145, 145), 0x090909U) << "a window draws inside of itself only";
    // Where it was, its parent is painted again.
    panel.seen.clear();
    child.ShowWindow(SW_HIDE);
    EXPECT_FALSE(child.IsWindowVisible());
    EXPECT_TRUE(Until([this] { return user.Pixel(160, 160) == 0x0A78C8; }));
    EXPECT_EQ(panel.painted.back(), CRect(50, 50, 100, 100));
    {
        CClientDC hidden(&child);
        hidden.FillSolidRect({0, 0, 50, 50}, RGB(1, 1, 1));
    }
    Settle();
    EXPECT_EQ(user.Pixel(160, 160), 0x0A78C8U);
}

TEST_F(Windows, WhatAnotherWindowCoveredComesBackWithoutPainting) {
    const xcb_window_t cover = user.MakeWindow(120, 120, 100, 100);
    user.DestroyWindow(cover);
    EXPECT_TRUE(Until([this] { return user.Pixel(150, 150) == 0x0A78C8; }));
    EXPECT_EQ(panel.Count(WM_PAINT), 0);
}

TEST_F(Windows, SizesShowsAndFindsItsChildren) {
    Recorder child;
    ASSERT_TRUE(child.Create(WindowClass{}, "name", WS_CHILD, {10, 10, 30, 30}, &panel, 18000));
    EXPECT_EQ(panel.GetDlgItem(18000), &child);
    EXPECT_FALSE(child.ShowWindow(SW_SHOW));
    EXPECT_TRUE(child.IsWindowVisible());
    child.SetWindowPos(nullptr, 40, 50, 99, 98, SWP_NOZORDER);
    EXPECT_EQ(child.Order({WM_SIZE, WM_MOVE}).size(), 2U);
    panel.MoveWindow(0, 0, 300, 100, true);
    EXPECT_EQ(panel.seen.back().message, WM_SIZE);
    EXPECT_TRUE(Until([this] { return user.BoundsOf(PanelId()).width == 300; }));
    EXPECT_EQ(user.BoundsOf(PanelId()).height, 100);
    class Refuses : public CWnd {
      protected:
        LRESULT WindowProc(UINT message, WPARAM w, LPARAM l) override {
            return message == WM_CREATE ? -1 : CWnd::WindowProc(message, w, l);
        }
    } refuses;
    EXPECT_FALSE(refuses.Create(WindowClass{}, "", WS_CHILD, {0, 0, 5, 5}, &panel, 1));
    EXPECT_FALSE(refuses.IsWindow());
    EXPECT_EQ(panel.children().size(), 1U);
}

TEST_F(Windows, PostedAndDeferredThingsRunAtTheNextIdleIfTheirTargetLives) {
    auto gone = std::make_unique<Recorder>();
    ASSERT_TRUE(gone->Create(WindowClass{}, "", WS_CHILD, {0, 0, 5, 5}, &panel, 1));
    gone->PostMessage(WM_USER + 1);
    bool ran = false;
    gone->Defer([&] { ran = true; });
    std::thread([this] { panel.PostMessage(WM_USER + 2, 5, 6); }).join();
    EXPECT_EQ(panel.Count(WM_USER + 2), 0);
    gone.reset();
    frame.Idle();
    EXPECT_EQ(panel.Count(WM_USER + 2), 1);
    EXPECT_FALSE(ran);
    frame.Idle();
    EXPECT_EQ(panel.Count(WM_USER + 2), 1);
}

TEST_F(Windows, TimersTickAtIdleAndNeverAfterTheirEnd) {
    using Clock = std::chrono::steady_clock;
    EXPECT_EQ(panel.SetTimer(1024, 20), 1024U);
    std::this_thread::sleep_for(std::chrono::milliseconds(90));
    EXPECT_EQ(panel.Count(WM_TIMER), 0) << "ticks wait for the idle";
    const auto start = Clock::now();
    frame.Idle();
    EXPECT_EQ(panel.Count(WM_TIMER), 1) << "and count as one";
    EXPECT_EQ(panel.seen.back(), (Seen{WM_TIMER, 0, 0}));
    ASSERT_TRUE(Until([this] { return panel.Count(WM_TIMER) == 6; }));
    // The first of the five may have been due already, and when it is late the second follows at once.
    EXPECT_GE(Clock::now() - start, 3 * std::chrono::milliseconds(20));
    std::this_thread::sleep_for(std::chrono::milliseconds(30)); // a tick is due
    EXPECT_TRUE(panel.KillTimer(1024));
    panel.seen.clear();
    Settle();
    EXPECT_EQ(panel.Count(WM_TIMER), 0);
    EXPECT_FALSE(panel.KillTimer(1024));
    // One timer a window: the second replaces the first, whose sleep of ten days ends at once.
    panel.SetTimer(1, 864000000);
    panel.SetTimer(2, 5);
    EXPECT_TRUE(Until([this] { return panel.Count(WM_TIMER) > 0; }));
}

TEST_F(Windows, KeysStayWithTheHostUnlessAFieldIsTypedInto) {
    CEdit edit;
    ASSERT_TRUE(edit.Create(WS_CHILD | WS_VISIBLE, {10, 10, 110, 30}, &panel, 5));
    user.TakeHostKeys();
    user.MoveTo(150, 115); // over the panel, over the field: still the host's keys
    user.Key(XK_space);
    Settle();
    EXPECT_EQ(user.TakeHostKeys(), 1);
    user.Click(300, 200); // a press on the panel takes no keyboard
    user.Key(XK_a);
    Settle();
    EXPECT_EQ(user.Focus(), host);
    EXPECT_EQ(user.TakeHostKeys(), 1);

    edit.SetFocus();
    EXPECT_TRUE(Until([this] { return user.Focus() == PanelId(); }));
    user.Keys({XK_1, XK_period, XK_5, XK_F5, XK_Return});
    CString text;
    EXPECT_TRUE(Until([&] { return edit.GetWindowText(text), text == "1.5"; })) << text;
    Settle();
    EXPECT_EQ(user.TakeHostKeys(), 0) << "typing must not reach the host's shortcuts";

    edit.ShowWindow(SW_HIDE);
    EXPECT_EQ(user.Focus(), host) << "the host has its keyboard back";
    user.Key(XK_space);
    Settle();
    EXPECT_EQ(user.TakeHostKeys(), 1);

    // When the user has gone elsewhere meanwhile, closing the field must not pull the keyboard back.
    edit.ShowWindow(SW_SHOW);
    edit.SetFocus();
    const xcb_window_t elsewhere = user.MakeWindow(700, 100, 50, 50);
    user.SetFocus(elsewhere);
    Settle();
    edit.DestroyWindow();
    Settle();
    EXPECT_EQ(user.Focus(), elsewhere);
}

TEST_F(Windows, HandlersMayTakeTheirOwnWindowApart) {
    class Suicidal : public CWnd {
      protected:
        LRESULT WindowProc(UINT message, WPARAM w, LPARAM l) override {
            if (message == WM_LBUTTONDOWN || message == WM_TIMER) {
                delete this;
                return 0;
            }
            return CWnd::WindowProc(message, w, l);
        }
    };
    auto* byMouse = new Suicidal;
    ASSERT_TRUE(byMouse->Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {0, 0, 50, 50}, &panel, 1));
    auto* byTimer = new Suicidal;
    ASSERT_TRUE(byTimer->Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {60, 0, 90, 50}, &panel, 2));
    byTimer->SetTimer(1, 1);
    user.Click(110, 110);
    EXPECT_TRUE(Until([this] { return panel.children().empty(); }));
}

} // namespace
} // namespace vocafade::test
