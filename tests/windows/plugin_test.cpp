// SPDX-License-Identifier: MIT
// The plug-in in a Windows host's hands, on several threads, and its looks.
#include "base/path.h"
#include "host/library.h"
#include "tests/editor/panel_picture.h"
#include "tests/support/wait_for.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <windows.h>

namespace vocafade::test {
namespace {

using EntryPoint = AEffect* (*)(audioMasterCallback);
using Windows = EditorTest;

TEST_F(Windows, AnotherInstanceLivesInAnotherThread) {
    HostedEditor mine(user, 20, 30);
    mine.Show();
    std::atomic<AEffect*> effect{nullptr};
    std::atomic<bool> end{false};
    std::atomic<int> idles{0};
    std::thread other([&] {
        const auto entry = reinterpret_cast<EntryPoint>(
            host::FindInLibrary(host::OpenLibrary(PathOf(VOCAFADE_PLUGIN)), "VSTPluginMain"));
        const HWND parent = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 20, 400, 477, 214,
                                              nullptr, nullptr, nullptr, nullptr);
        AEffect* its = entry(SilentHost);
        its->dispatcher(its, effOpen, 0, 0, nullptr, 0.0f);
        its->dispatcher(its, effEditOpen, 0, 0, parent, 0.0f);
        effect = its;
        while (!end) {
            if (effect != nullptr) its->dispatcher(its, effEditIdle, 0, 0, nullptr, 0.0f);
            ++idles;
            MSG message;
            while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                ::TranslateMessage(&message);
                ::DispatchMessageW(&message);
            }
            ::Sleep(2);
        }
        ::DestroyWindow(parent);
    });
    ASSERT_TRUE(WaitFor([&] { mine.Idle(); }, [&] { return effect != nullptr && idles > 5; }));
    mine.Click(kSwitch);
    user.Click(20 + kSwitch.x, 400 + kSwitch.y);
    AEffect* its = effect;
    EXPECT_TRUE(WaitFor([&] { mine.Idle(); }, [&] { return its->getParameter(its, 0) == 0.0f; }));
    EXPECT_EQ(mine.Value(0), 0.0f);
    EXPECT_TRUE(ShowsItsEffect(mine, true));
    // A host that closes it from the wrong thread: the window goes in its own, and nothing of the plug-in is called.
    effect = nullptr;
    const int before = idles;
    ASSERT_TRUE(WaitFor([] {}, [&] { return idles > before + 2; }));
    its->dispatcher(its, effClose, 0, 0, nullptr, 0.0f);
    const int after = idles;
    EXPECT_TRUE(WaitFor([&] { mine.Idle(); }, [&] { return idles > after + 20; }));
    end = true;
    other.join();
    mine.Settle();
    EXPECT_TRUE(ShowsItsEffect(mine, true));
}

TEST_F(Windows, PanelLooksAsOnLinux) {
    const char* path = std::getenv("VOCAFADE_LINUX_PANEL");
    ASSERT_NE(path, nullptr);
    const Picture there = PictureIn("Z:" + std::string(path));
    HostedEditor editor(user);
    editor.Show();
    const Picture here = editor.LookAtPanel();
    ASSERT_EQ(here.pixels.size(), there.pixels.size());
    int different = 0;
    for (std::size_t i = 0; i < here.pixels.size(); ++i) {
        int most = 0;
        for (const int shift : {0, 8, 16})
            most = std::max(most, std::abs(static_cast<int>(here.pixels[i] >> shift & 0xFF) -
                                           static_cast<int>(there.pixels[i] >> shift & 0xFF)));
        if (most > 8) ++different;
    }
    RecordProperty("different", different);
    std::printf("%d of %d pixels differ by more than 8 of 255\n", different, 477 * 214);
    EXPECT_LE(different, 477 * 214 / 50);
}

} // namespace
} // namespace vocafade::test
