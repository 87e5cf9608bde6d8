// SPDX-License-Identifier: MIT
// On a desktop of 144 dots an inch, in a host that looks after its scale by itself.
#include "tests/editor/panel_picture.h"

#include <windows.h>

namespace vocafade::test {
namespace {

const bool kAware = ::SetProcessDPIAware() != 0; // before there is any window

TEST_F(EditorTest, IsDrawnAtTheScaleOfTheDesktop) {
    ASSERT_TRUE(kAware);
    HostedEditor editor(user);
    user.Resize(editor.parent, 716, 321);
    ASSERT_TRUE(editor.Show());
    EXPECT_EQ(editor.Size(), CSize(716, 321));
    const std::vector<xcb_window_t> windows = user.Children(editor.parent);
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_EQ(user.BoundsOf(windows[0]), (XUser::Bounds{20, 30, 716, 321}));
    const float before = editor.Value(0);
    editor.Click({kSwitch.x * 3 / 2, kSwitch.y * 3 / 2});
    EXPECT_NE(editor.Value(0), before);
    EXPECT_GT(editor.Look({0, 315, 716, 321}).at(700, 3), 0U) << "drawn to its edge";
}

} // namespace
} // namespace vocafade::test
