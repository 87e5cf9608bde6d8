// SPDX-License-Identifier: MIT
// A host that automates everything from its audio thread at every block, whatever the editor and the main thread do.
#include "tests/editor/panel_picture.h"
#include "tests/support/wait_for.h"

#include <atomic>
#include <cmath>
#include <thread>

namespace vocafade::test {
namespace {

class Threads : public EditorTest {
  protected:
    Threads() : editor(user, 20, 30, &SilentHost) {}
    HostedEditor editor;
};

TEST_F(Threads, AutomationGoesOnWhileTheEditorOpensWorksAndCloses) {
    {
        std::atomic<int> blocks{0};
        const std::jthread audio([&](const std::stop_token& end) {
            std::vector<float> samples(128, 0.25f);
            float* channels[] = {samples.data(), samples.data()};
            AEffect* const effect = editor.effect;
            for (int block = 0; !end.stop_requested(); blocks = ++block) {
                for (std::int32_t i = 0; i < 6; ++i)
                    effect->setParameter(effect, i,
                                         0.5f + 0.5f * static_cast<float>(std::sin(block * 0.01 + i)));
                effect->processReplacing(effect, channels, channels, 128);
                if (block % 16 == 0) std::this_thread::yield();
            }
        });
        for (int round = 0; round < 12; ++round) {
            editor.Show();
            editor.Click({150, 100});
            editor.Open(kOpenables[round % 4]);
            if (round % 2 == 0) editor.Key(XK_Escape);
            editor.Ask(effSetProgram, 0, round);
            editor.Ask(effSetSampleRate, 0, 0, nullptr, round % 2 == 0 ? 48000.0f : 44100.0f);
            editor.Ask(effSetBlockSize, 0, 100 + round * 100);
            editor.Ask(effMainsChanged, 0, 0);
            editor.Ask(effMainsChanged, 0, 1);
            editor.Close();
        }
        editor.Show();
        // On a busy machine the audio may not have had its turn since the last program came.
        const int before = blocks;
        EXPECT_TRUE(WaitFor([this] { editor.Idle(); }, [&] { return blocks > before + 100; }));
    }
    for (int i = 0; i < 200; ++i) // the meters fall to the ground
        editor.Idle();
    editor.Settle();
    EXPECT_TRUE(ShowsItsEffect(editor, true)); // the last values, without another word of the host
}

} // namespace
} // namespace vocafade::test
