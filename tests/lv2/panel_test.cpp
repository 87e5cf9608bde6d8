// SPDX-License-Identifier: MIT
#include "tests/lv2/panel_host.h"
#include "tests/support/temp_folder.h"
#include "tests/support/x_server.h"

#include <X11/keysym.h>
#include <algorithm>
#include <optional>

namespace vocafade::test {
namespace {

using Point = PanelHost::Point;
constexpr Point kLoFreqFader{149, 85};
constexpr Point kLoFreqReadout{150, 192};
constexpr Point kOnOff{35, 15};
constexpr Point kCopy{75, 18};
constexpr std::uint32_t kLoFreqPort = lv2::PortOf(kParameterLoFreq);
constexpr std::uint32_t kOnOffPort = lv2::PortOf(kParameterOnOff);
using Touches = std::vector<std::pair<std::uint32_t, bool>>;
using Writes = std::vector<std::pair<std::uint32_t, float>>;

XServer& SharedServer() {
    static XServer server;
    return server;
}

class Lv2Panel : public WithSettings {
  protected:
    void Open() {
        panel.emplace(user, plugin);
        ASSERT_TRUE(panel->IsOpen());
        for (std::int32_t i = 0; i < kParameterCount; ++i) // as hosts do
            panel->Tell(i, plugin.Control(i));
        panel->Settle();
    }
    std::pair<int, int> Size() {
        const XUser::Bounds bounds = user.BoundsOf(panel->widget);
        return {bounds.width, bounds.height};
    }
    Picture Fader() { return panel->Look(141, 45, 16, 133); }

    XServer& server = SharedServer();
    XUser user;
    Lv2Bundle bundle;
    Lv2Plugin plugin{bundle};
    std::optional<PanelHost> panel;
};

TEST_F(Lv2Panel, ItsWindowIsThereInTheScaleOfTheHost) {
    const std::pair usual(477, 214); // of a host that says nothing
    for (const auto& [scale, size] : {std::pair{0.0f, usual}, {1.5f, {716, 321}}, {0.0f, usual}}) {
        panel.emplace(user, plugin, PanelHost::Offer{plugin.handle(), true, true, scale});
        ASSERT_TRUE(panel->IsOpen());
        EXPECT_EQ(user.Children(panel->parent), std::vector<xcb_window_t>{panel->widget});
        EXPECT_EQ(panel->size, size);
        panel->Settle();
        EXPECT_EQ(Size(), size);
        EXPECT_TRUE(user.IsViewable(panel->widget));
        if (scale > 0.0f) { // it changes while the panel is open
            EXPECT_EQ(panel->SetScale(2.1f), std::uint32_t{LV2_OPTIONS_SUCCESS});
            panel->Settle();
            EXPECT_EQ(panel->size, std::pair(954, 428));
            EXPECT_EQ(Size(), panel->size);
        }
        panel->Close();
        EXPECT_TRUE(user.Children(panel->parent).empty());
    }
}

TEST_F(Lv2Panel, AFaderWritesItsPortWhileItIsHeld) {
    Open();
    panel->Press(kLoFreqFader);
    ASSERT_FALSE(panel->writes.empty());
    panel->MoveTo({149, 70});
    panel->MoveTo({149, 60});
    EXPECT_EQ(panel->touches, (Touches{{kLoFreqPort, true}})) << "it is held all the time";
    panel->Release({149, 60});
    EXPECT_EQ(panel->touches, (Touches{{kLoFreqPort, true}, {kLoFreqPort, false}}));
    ASSERT_GE(panel->writes.size(), 3U);
    float last = 0.0f;
    for (const auto& [port, value] : panel->writes) {
        EXPECT_EQ(port, kLoFreqPort);
        EXPECT_GT(value, last) << "upwards, in Hz";
        last = value;
    }
    EXPECT_EQ(plugin.Run(Song()), Expected(Song(), {1, 0, 0, last, 9000, 64}));
}

TEST_F(Lv2Panel, ATypedNumberArrivesAsItWasTyped) {
    Open();
    panel->Click(kLoFreqReadout);
    user.KeyDown(XK_Control_L);
    user.Key('a');
    user.KeyUp(XK_Control_L);
    user.Type("1234");
    panel->Settle();
    EXPECT_TRUE(panel->writes.empty()) << "nothing before Return";
    user.Key(XK_Return);
    panel->Settle();
    ASSERT_EQ(panel->writes.size(), 1U);
    EXPECT_EQ(panel->writes[0].first, kLoFreqPort);
    EXPECT_NEAR(panel->writes[0].second, 1234.0f, 0.006f) << "the field adds half a hundredth";
    EXPECT_EQ(panel->touches, (Touches{{kLoFreqPort, true}, {kLoFreqPort, false}}));
}

TEST_F(Lv2Panel, ShowsWhatTheHostSaysWhatItAutomatesAndTheSoundsLevel) {
    Open();
    const auto meters = [this] { return panel->Look(29, 45, 20, 133); };
    const Picture silent = meters();
    const Picture before = Fader();
    panel->Tell(kParameterLoFreq, 5000.0f);
    panel->Settle();
    EXPECT_FALSE(Fader() == before);
    EXPECT_TRUE(meters() == silent);
    std::this_thread::sleep_for(std::chrono::milliseconds(600)); // what the host tells counts for that long
    plugin.Control(kParameterLoFreq) = 400.0f;                   // with no word to the editor
    plugin.Run(Song(512));
    panel->Settle();
    EXPECT_TRUE(Fader() == before);
    EXPECT_FALSE(meters() == silent);
    EXPECT_TRUE(panel->writes.empty()) << "what came from the host does not go back to it";
    EXPECT_TRUE(panel->touches.empty());
}

TEST_F(Lv2Panel, IsNotPulledBackByAHostThatIsLate) {
    Open();
    panel->deaf = true;
    panel->Press(kLoFreqFader);
    const Picture held = Fader();
    plugin.Run(Song(512)); // still with the old value
    panel->Settle();
    EXPECT_TRUE(Fader() == held);
    panel->Release(kLoFreqFader);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    plugin.Run(Song(512)); // and a host that does not take it at all has the last word
    panel->Settle();
    EXPECT_FALSE(Fader() == held);
}

TEST_F(Lv2Panel, SwitchesAndCopiesProgramsThroughThePorts) {
    Open();
    panel->Click(kOnOff);
    EXPECT_EQ(panel->writes, (Writes{{kOnOffPort, 0.0f}}));
    panel->Click(kLoFreqFader);
    panel->writes.clear();
    panel->touches.clear();
    const std::vector<xcb_window_t> before = user.TopLevels();
    panel->Click(kCopy);
    const std::vector<xcb_window_t> with = user.TopLevels();
    ASSERT_EQ(with.size(), before.size() + 1) << "the menu of programs";
    const XUser::Bounds menu = user.BoundsOf(with.back());
    user.Click(menu.x + 20, menu.y + 30);
    panel->Settle();
    // Another program has the defaults: both that differed go back, and nothing else is written.
    std::sort(panel->writes.begin(), panel->writes.end());
    EXPECT_EQ(panel->writes, (Writes{{kOnOffPort, 1.0f}, {kLoFreqPort, 400.0f}}));
    EXPECT_EQ(panel->touches.size(), 4U);
}

TEST_F(Lv2Panel, IsRefusedWhereItCannotWork) {
    const auto refused = [&](const PanelHost::Offer& offer) {
        const PanelHost tried(user, plugin, offer);
        return !tried.IsOpen() && user.Children(tried.parent).empty();
    };
    EXPECT_TRUE(refused({nullptr})) << "in another process than the plug-in";
    int foreign = 0;
    EXPECT_TRUE(refused({&foreign})) << "another's instance";
    EXPECT_TRUE(refused({plugin.handle(), false})) << "no window";
    {
        const PanelHost plain(user, plugin, {plugin.handle(), true, false});
        EXPECT_TRUE(plain.IsOpen()) << "it can do without the rest";
        EXPECT_TRUE(refused({plugin.handle()})) << "a second one of the same instance";
    }
    EXPECT_FALSE(refused({plugin.handle()})) << "and then it is free again";
}

TEST_F(Lv2Panel, OpensInAWindowOfAnotherVisual) {
    xcb_connection_t* c = user.connection();
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    xcb_visualid_t visual = 0;
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == 32 && depth.data->visuals_len > 0)
            visual = xcb_depth_visuals(depth.data)->visual_id;
    }
    if (visual == 0) GTEST_SKIP() << "the server has no windows with an alpha channel";
    const xcb_colormap_t colours = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, colours, screen->root, visual);
    const xcb_window_t plug = xcb_generate_id(c);
    const std::uint32_t values[] = {0, colours};
    xcb_create_window(c, 32, plug, screen->root, 20, 30, 477, 214, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values);
    user.Show(plug);
    user.Sync();
    panel.emplace(user, plugin, PanelHost::Offer{plugin.handle()}, plug);
    ASSERT_TRUE(panel->IsOpen());
    panel->Settle();
    EXPECT_TRUE(user.IsViewable(panel->widget));
    panel->Click(kLoFreqFader);
    EXPECT_FALSE(panel->writes.empty());
}

TEST_F(Lv2Panel, MayBeClosedWhileItTellsTheHost) {
    Open();
    panel->fickle = true;
    panel->Click(kLoFreqFader);
    EXPECT_FALSE(panel->IsOpen());
    EXPECT_EQ(panel->touches.back(), std::pair(kLoFreqPort, false));
}

TEST_F(Lv2Panel, OutlivesItsInstance) {
    std::optional<Lv2Plugin> shortLived(std::in_place, bundle);
    PanelHost orphan(user, *shortLived);
    ASSERT_TRUE(orphan.IsOpen());
    shortLived.reset();
    const Lv2Plugin atTheSamePlace(bundle);
    orphan.Settle();
    orphan.Tell(kParameterLoFreq, 500.0f);
    orphan.Close();
    EXPECT_TRUE(orphan.writes.empty());
}

} // namespace
} // namespace vocafade::test
