// SPDX-License-Identifier: MIT
// The plug-in in a Windows host's hands: its editor opened and closed, on several threads, and its looks.
#include "base/path.h"
#include "host/library.h"
#include "tests/editor/panel_picture.h"
#include "tests/support/process_counts.h"
#include "tests/support/wait_for.h"
#include "ui/dc.h"
#include "ui/gdi.h"

#include <atomic>
#include <cstdlib>
#include <thread>
#include <windows.h>

namespace vocafade::test {
namespace {

using EntryPoint = AEffect* (*)(audioMasterCallback);
using Windows = EditorTest;

TEST_F(Windows, OpensAndClosesTheEditorAHundredTimes) {
    HostedEditor editor(user);
    std::size_t handles = 0;
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(editor.Open()) << round;
        editor.Idle();
        if (round % 4 == 0) editor.Click(round % 8 == 0 ? kSave : kCopy);
        if (round % 10 == 0) {
            editor.Settle();
            if (round % 4 != 0) {
                ASSERT_TRUE(ShowsItsEffect(editor)) << round;
            }
        }
        editor.Close();
        if (round == 20) handles = OpenFiles();
    }
    EXPECT_LE(OpenFiles(), handles + 5);
    EXPECT_TRUE(user.Children(editor.parent).empty());
}

TEST_F(Windows, AnotherInstanceLivesInAnotherThread) {
    HostedEditor mine(user, 20, 30);
    mine.Open();
    mine.Settle();
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
    const std::string file = ReadFile("Z:" + std::string(path));
    CBitmap there;
    ASSERT_TRUE(there.LoadPng(std::as_bytes(std::span(file)))) << path;
    CDC panel;
    panel.CreateBitmapDC(477, 214);
    CDC source;
    source.CreateCompatibleDC(&panel);
    source.SelectObject(&there);
    panel.BitBlt(0, 0, 477, 214, &source, 0, 0, SRCCOPY);
    HostedEditor editor(user);
    editor.Open();
    editor.Settle();
    const Picture here = editor.LookAtPanel();
    int different = 0;
    for (int y = 0; y < 214; ++y) {
        for (int x = 0; x < 477; ++x) {
            const COLORREF c = panel.GetPixel(x, y);
            const std::uint32_t pixel = here.at(x, y);
            const int most =
                std::max({std::abs(static_cast<int>(GetRValue(c)) - static_cast<int>(pixel >> 16 & 0xFF)),
                          std::abs(static_cast<int>(GetGValue(c)) - static_cast<int>(pixel >> 8 & 0xFF)),
                          std::abs(static_cast<int>(GetBValue(c)) - static_cast<int>(pixel & 0xFF))});
            if (most > 8) ++different;
        }
    }
    RecordProperty("different", different);
    std::printf("%d of %d pixels differ by more than 8 of 255\n", different, 477 * 214);
    EXPECT_LE(different, 477 * 214 / 50);
}

} // namespace
} // namespace vocafade::test
