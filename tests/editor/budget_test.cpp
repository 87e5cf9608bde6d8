// SPDX-License-Identifier: MIT
// What the open editor may cost its host, in what can be counted on any machine; vocafade-ui-bench measures
// the times.
#include "tests/editor/panel_picture.h"
#include "tests/support/x_traffic.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace vocafade::test {
namespace {

constexpr long kPanelBytes = 477L * 214 * 4;

class Budget : public OpenEditorTest {
  protected:
    XTraffic Idle() {
        return XTraffic::Of([this] { editor.Idle(); });
    }
};

TEST_F(Budget, AnIdleWithNothingToDoAsksTheDisplayNothingAndItsThreadSleeps) {
    const std::clock_t usedBefore =
        std::clock(); // by the whole process: the timer's thread is a part of the editor
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(Idle(), XTraffic{});
        std::this_thread::sleep_for(std::chrono::milliseconds(33)); // its timer ticks, too
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const double used = static_cast<double>(std::clock() - usedBefore) / CLOCKS_PER_SEC;
    EXPECT_LT(used / took.count(), 0.3) << "of a core: a thousandth, unless a thread goes round in circles";
}

TEST_F(Budget, ThePanelIsSentOnceWhenItIsOpened) {
    editor.Close();
    editor.Open();
    EXPECT_GE(Idle().bytesSent, kPanelBytes);
    long more = 0;
    for (int i = 0; i < 5; ++i) {
        user.Sync();
        more += Idle().bytesSent;
    }
    EXPECT_LE(more, 1000);
    EXPECT_TRUE(ShowsItsEffect(editor));
    user.Hide(editor.parent); // what was on the screen is lost
    user.Show(editor.parent);
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor));
}

TEST_F(Budget, AStepOfTheMetersSendsThemAlone) {
    editor.Play(0.9f);
    editor.Idle(); // they rise, and fall from then on
    for (int i = 0; i < 100; ++i) {
        const XTraffic step = Idle();
        EXPECT_GT(step.bytesSent, 0);
        EXPECT_LE(step.bytesSent, kPanelBytes / 20); // four bars
        EXPECT_LE(step.waits, 1);
    }
}

} // namespace
} // namespace vocafade::test
