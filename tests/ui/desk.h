// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/environment.h"
#include "tests/support/wait_for.h"
#include "tests/support/x_server.h"
#include "tests/support/x_traffic.h"
#include "tests/support/x_user.h"
#include "ui/ui.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace vocafade::test {

inline testing::Environment* const kNeedsXServer = testing::AddGlobalTestEnvironment(new NeedsXServer);

struct Seen {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    bool operator==(const Seen&) const = default;
    CPoint point() const { return CPoint::FromMessage(lParam); }
};

/// A window that notes its messages.
class Recorder : public CWnd {
  public:
    std::vector<Seen> seen;
    std::vector<CRect> painted;
    COLORREF color = RGB(10, 120, 200);

    int Count(UINT message) const {
        return static_cast<int>(std::ranges::count(seen, message, &Seen::message));
    }
    /// The messages with one of these numbers, in order.
    std::vector<UINT> Order(std::initializer_list<UINT> wanted) const {
        std::vector<UINT> order;
        for (const Seen& s : seen)
            if (std::find(wanted.begin(), wanted.end(), s.message) != wanted.end())
                order.push_back(s.message);
        return order;
    }

  protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        seen.push_back({message, wParam, lParam});
        if (message != WM_PAINT) return CWnd::WindowProc(message, wParam, lParam);
        CPaintDC dc(this);
        painted.push_back(dc.updateRect());
        dc.FillSolidRect(dc.clientRect(), color);
        return 0;
    }
};

/// A display, a host's window at (100, 100) of 500 by 300 pixels, and a panel of 460 by 210 in it, already
/// painted.
class Desk : public ::testing::Test {
  protected:
    Desk() { SetVariable("LC_ALL", "en_US.UTF-8"); } // whose compose sequences are known

    void SetUp() override {
        user.SetFocus(user.Root());
        user.MoveTo(1, 1);
        host = user.MakeWindow(100, 100, 500, 300);
        user.PublishSettings(DoubleClickSettings(60000)); // ms: enough on the busiest machine
        user.SetFocus(host);
        ASSERT_TRUE(frame.AttachHost(Native(host)));
        ASSERT_TRUE(panel.Create(WindowClass{}, "panel", WS_CHILD | WS_VISIBLE, {0, 0, 460, 210}, &frame, 0));
        ASSERT_TRUE(Until([this] { return user.Pixel(300, 200) == 0x0A78C8; })) << "the panel does not show";
        Settle();
        panel.seen.clear();
        panel.painted.clear();
    }

    static void* Native(xcb_window_t window) {
        return reinterpret_cast<void*>(static_cast<std::uintptr_t>(window));
    }
    xcb_window_t PanelId() {
        const std::vector<xcb_window_t> children = user.Children(host);
        return children.empty() ? 0 : children.back();
    }
    /// Runs idles until `done`; false when it takes too long.
    bool Until(const std::function<bool()>& done) {
        return WaitFor([this] { frame.Idle(); }, done);
    }
    /// Runs idles until everything that has happened has arrived.
    void Settle() {
        user.Sync();
        for (int i = 0; i < 5; ++i) {
            frame.Idle();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    /// How often the next idle waits for the display, where there is one to wait for.
    long WaitsOfAnIdle() {
#if defined(_WIN32)
        frame.Idle();
        return 0;
#else
        return XTraffic::Of([this] { frame.Idle(); }).waits;
#endif
    }
    /// The highest window on the screen: a dialog or a menu, else the host's.
    xcb_window_t TopWindow() {
        const std::vector<xcb_window_t> windows = user.TopLevels();
        return windows.empty() ? 0 : windows.back();
    }

    XServer server;
    XUser user;
    xcb_window_t host = 0;
    CFrameWnd frame;
    Recorder panel;
};

} // namespace vocafade::test
