// SPDX-License-Identifier: MIT
// Any client of a display can send any other's windows what claims to be an event. The editor takes it for
// input, or for nothing.
#include "tests/editor/panel_picture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

namespace vocafade::test {
namespace {

using Bytes = std::array<std::uint8_t, 32>;

class Forged : public OpenEditorTest {
  protected:
    xcb_window_t Panel() {
        const std::vector<xcb_window_t> children = user.Children(editor.parent);
        return children.empty() ? 0 : children.front();
    }
    /// The editor's windows at the moment: its panel, its menus and dialogs.
    std::vector<xcb_window_t> Windows() {
        std::vector<xcb_window_t> windows = user.TopLevels();
        std::erase_if(windows,
                      [this](auto window) { return std::ranges::count(windowsBefore, window) != 0; });
        windows.push_back(Panel());
        return windows;
    }
    /// To the editor, which made its own windows and listens to what happens to its host's.
    template <typename Event>
    void Send(xcb_window_t window, const Event& event) {
        user.Forge(window, event,
                   window == editor.parent ? XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT);
    }
    /// Whatever has happened to it, a new opening shows what the effect holds, and that makes sense.
    void ExpectSane() {
        editor.Settle();
        editor.Close();
        EXPECT_EQ(Windows().size(), 1U) << "something stays open";
        ASSERT_TRUE(editor.Show());
        PanelState state = PanelState::Of(editor);
        state.modified = editor.LookAtPanel() != ExpectedPanel(state); // it may be, or not
        EXPECT_TRUE(ShowsItsEffect(editor, state.modified));
        for (std::int32_t i = 0; i < 6; ++i) {
            EXPECT_GE(editor.Value(i), 0.0f) << i;
            EXPECT_LE(editor.Value(i), 1.0f) << i;
        }
    }
};

TEST_F(Forged, AnyBytesOfAnyTypeAndEveryKey) {
    constexpr std::array<std::uint16_t, 4> kStates{0x0000, 0x0001, 0x0004, 0xFFFF};
    std::mt19937 random(11);
    for (std::size_t round = 0; round < 20; ++round) {
        const std::size_t what = round % 5; // and nothing, at last
        for (int code = 0; code < 256; ++code) {
            if (code % 16 == 0) {
                editor.Idle();
                if (what < std::size(kOpenables) && Popup() == 0) editor.Open(kOpenables[what]);
            }
            const std::vector<xcb_window_t> windows = Windows();
            const bool toHost = random() % 8 == 0;
            const xcb_window_t window = toHost ? editor.parent : windows[random() % windows.size()];
            Bytes event;
            for (std::uint8_t& byte : event)
                byte = static_cast<std::uint8_t>(random() % 4 == 0 ? 0 : random());
            // The server lets the types of its extensions through, too; those of the core are 2 to 34.
            event[0] = static_cast<std::uint8_t>(random() % 4 == 0 ? 64 + random() % 64 : 2 + random() % 33);
            for (const std::size_t place : {4U, 8U, 12U, 16U}) // where events name their windows
                if (random() % 2 == 0) std::memcpy(event.data() + place, &window, sizeof window);
            Send(window, event);
            xcb_key_press_event_t key{};
            key.detail = static_cast<std::uint8_t>(code);
            key.state = kStates[round / 5];
            for (const xcb_window_t typedInto : windows) {
                key.event = typedInto;
                key.response_type = XCB_KEY_PRESS;
                Send(typedInto, key);
                key.response_type = XCB_KEY_RELEASE;
                Send(typedInto, key);
            }
        }
        ExpectSane();
        editor.Enter(kLoFreq, "1500"); // and its field is still typed into
        EXPECT_EQ(editor.Display(3), "1500.0") << round;
        if (HasFatalFailure()) return;
    }
}

TEST_F(Forged, AbsurdPlacesAndSizes) {
    constexpr std::int16_t kPlaces[] = {-32768, -1, 0, 100, 32767};
    for (const std::int16_t x : kPlaces) {
        for (const std::int16_t y : kPlaces) {
            const auto mouse = [this](std::uint8_t type, int toX, int toY) {
                xcb_button_press_event_t event{};
                event.response_type = type;
                event.detail = type == XCB_MOTION_NOTIFY ? 0 : 1;
                event.event = Panel();
                event.event_x = static_cast<std::int16_t>(toX);
                event.event_y = static_cast<std::int16_t>(toY);
                event.state = type == XCB_BUTTON_PRESS ? 0 : XCB_BUTTON_MASK_1;
                Send(event.event, event);
            };
            // Pressed on a fader and on the knob, pulled out and let go there.
            for (const CPoint from : {CPoint(150, 100), CPoint(324, 150)}) {
                mouse(XCB_BUTTON_PRESS, from.x, from.y);
                mouse(XCB_MOTION_NOTIFY, x, y);
                mouse(XCB_BUTTON_RELEASE, x, y);
            }
            const auto size = static_cast<std::uint16_t>(x == 0 ? 0 : 65535);
            xcb_expose_event_t expose{};
            expose.response_type = XCB_EXPOSE;
            expose.window = Panel();
            expose.x = static_cast<std::uint16_t>(x);
            expose.y = static_cast<std::uint16_t>(y);
            expose.width = expose.height = size;
            Send(Panel(), expose);
            xcb_configure_notify_event_t moved{};
            moved.response_type = XCB_CONFIGURE_NOTIFY;
            moved.x = x;
            moved.y = y;
            moved.width = moved.height = size;
            for (const xcb_window_t window : {Panel(), editor.parent}) {
                moved.event = moved.window = window;
                Send(window, moved);
            }
            editor.Idle();
        }
    }
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, true)) << "in the window that was open all the while";
    ExpectSane();
}

TEST_F(Forged, EndOfAWindowIsNotBelieved) {
    const xcb_window_t panel = Panel();
    for (const std::uint8_t type :
         {XCB_DESTROY_NOTIFY, XCB_UNMAP_NOTIFY, XCB_MAP_NOTIFY, XCB_REPARENT_NOTIFY, XCB_GRAVITY_NOTIFY}) {
        for (const xcb_window_t window : {panel, editor.parent}) {
            xcb_destroy_notify_event_t event{}; // the others begin alike
            event.response_type = type;
            event.event = event.window = window;
            Send(window, event);
        }
        editor.Settle();
    }
    user.AskToClose(panel); // only the host closes what lies in its window
    editor.Settle();
    EXPECT_EQ(Panel(), panel);
    const float before = editor.Value(0);
    editor.Click(kSwitch);
    EXPECT_NE(editor.Value(0), before) << "the panel still listens";
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Forged, SettingsOfADesktopThatMakeNoSense) {
    const std::string good = DoubleClickSettings(0x7FFFFFFF);
    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        std::string bytes = good;
        if (round < 20) bytes.resize(static_cast<std::size_t>(round) * 2);
        if (round % 3 == 0 && bytes.size() > 8) bytes[8] = '\xff'; // far more than there are
        for (int i = 0; round >= 20 && i < 3; ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        user.PublishSettings(bytes);
        editor.Close();
        ASSERT_TRUE(editor.Open());
        editor.Idle();
    }
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor));
}

} // namespace
} // namespace vocafade::test
