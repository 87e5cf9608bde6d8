// SPDX-License-Identifier: MIT
// A host that dies in the middle of saving, at many instants spread over the whole save.
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>

namespace vocafade::test {
namespace {

using KilledSave = WithSettings;

constexpr int kSlot = 30;

/// How often it dies: 150 times, or as VOCAFADE_KILLS says.
int Instants() {
    const char* asked = std::getenv("VOCAFADE_KILLS"); // NOLINT(concurrency-mt-unsafe): one thread
    return asked != nullptr ? std::stoi(asked) : 150;
}

/// Saves until it is killed; each save's name tells the value that belongs to it.
[[noreturn]] void SaveForEver(int startedEnd) {
    AVocafade effect(SilentHost);
    effect.open();
    effect.setProgram(kSlot);
    const char go = 1;
    [[maybe_unused]] const ssize_t told = ::write(startedEnd, &go, 1);
    for (int i = 0;; i = (i + 1) % 1000) {
        effect.setParameter(4, static_cast<float>(i) / 1000.0F);
        effect.SaveProgram(kSlot, ("save " + std::to_string(i)).c_str());
    }
}

TEST_F(KilledSave, LeavesTheOldBankOrTheNewOne) {
    const int instants = Instants();
    int newOnes = 0;
    double saveSeconds = 0.0;
    {
        AVocafade effect(SilentHost);
        effect.open();
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < 20; ++i)
            effect.SaveProgram(kSlot, "save 0");
        saveSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / 20.0;
        effect.setParameter(4, 0.0F);
        effect.SaveProgram(kSlot, "save 0");
    }
    for (int instant = 0; instant < instants; ++instant) {
        int started[2];
        ASSERT_EQ(::pipe(started), 0);
        const pid_t child = ::fork();
        if (child == 0) SaveForEver(started[1]);
        char go = 0;
        ASSERT_EQ(::read(started[0], &go, 1), 1);
        // Three saves long, in steps that hit every part of one.
        ::usleep(static_cast<useconds_t>(3e6 * saveSeconds * instant / instants));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ::close(started[0]);
        ::close(started[1]);

        const std::string bytes = ReadFile(BankPath());
        ASSERT_EQ(bytes.size(), 3488U) << instant;
        ASSERT_EQ(bytes.substr(0, 12), std::string("CcnK\0\0\0\0FBCh", 12)) << instant;
        const std::string name = bytes.c_str() + 160 + kSlot * 52 + 24;
        ASSERT_EQ(name.substr(0, 5), "save ") << instant;
        float value = 0.0F;
        std::memcpy(&value, bytes.data() + 160 + kSlot * 52 + 16, sizeof value);
        ASSERT_EQ(value, static_cast<float>(std::stoi(name.substr(5))) / 1000.0F) << instant;
        if (name != "save 0") ++newOnes;
    }
    const auto scraps = [this] {
        const std::filesystem::directory_iterator files(settings / "config");
        return static_cast<std::size_t>(std::distance(begin(files), end(files))) - 1;
    };
    std::printf(
        "%d instants over three saves of %.0f us: %d ended behind a save, %zu unfinished files left\n",
        instants, saveSeconds * 1e6, newOnes, scraps());
    EXPECT_GT(newOnes, instants / 20);
    EXPECT_GT(scraps(), 0U) << "no kill ever hit the middle of a save, so nothing was shown";
    MakeOld(settings.path() / "config");
    AVocafade next(SilentHost);
    next.open();
    next.SaveProgram(kSlot, "whole");
    EXPECT_EQ(scraps(), 0U);
}

} // namespace
} // namespace vocafade::test
