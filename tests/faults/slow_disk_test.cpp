// SPDX-License-Identifier: MIT
// The bank on a disk that takes its time, or that is pulled out in the middle: sound goes on, and the bank is
// whole. Nothing here is measured in seconds: each call for the file returns only when the audio thread has
// got on, which it could not if anything that it needs were held meanwhile.
#include "tests/faults/troubled_disk.h"
#include "tests/support/open_effect.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <map>
#include <sys/wait.h>
#include <thread>

namespace vocafade::test {
namespace {

constexpr std::int32_t kSlot = 9;
constexpr std::int32_t kBlock = 256;

/// Lets an effect play and be automated on a thread of its own, until the end of the scope.
class Playing {
  public:
    explicit Playing(AVocafade& effect)
        : thread_([this, &effect](const std::stop_token& stop) { Run(effect, stop); }) {}

    /// False when no `count` more blocks come within a minute.
    bool GoesOn(int count) const {
        const auto until = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        for (const int wanted = blocks_ + count; blocks_ < wanted; std::this_thread::yield())
            if (std::chrono::steady_clock::now() > until) return false;
        return true;
    }

  private:
    void Run(AVocafade& effect, const std::stop_token& stop) {
        Samples left = Noise(kBlock, 1), right = Noise(kBlock, 2), outLeft(kBlock), outRight(kBlock);
        while (!stop.stop_requested()) {
            float* in[] = {left.data(), right.data()};
            float* out[] = {outLeft.data(), outRight.data()};
            effect.setParameter(0, 1.0f);
            effect.setParameter(4, static_cast<float>(blocks_ % 100) / 100.0f);
            effect.processReplacing(in, out, kBlock);
            EXPECT_TRUE(
                std::all_of(outLeft.begin(), outLeft.end(), [](float s) { return std::isfinite(s); }));
            ++blocks_;
        }
    }

    std::atomic<int> blocks_{0};
    std::jthread thread_; // ends with the scope, before what it uses
};

class SlowDisk : public WithSettings {
  protected:
    SlowDisk() {
        effect.setSampleRate(48000.0f);
        effect.setBlockSize(kBlock);
        effect.SetMessageHook([this](std::int32_t, const std::string& path) {
            EXPECT_EQ(path, BankPath());
            ++effect.messages;
        });
        effect.SaveProgram(kSlot, "old");
    }
    int CallsOfASave() {
        int calls = 0;
        const TroubledDisk disk([&](const char*) { return ++calls > 0; });
        effect.SaveProgram(kSlot, "old");
        EXPECT_GT(calls, 15);
        return calls;
    }
    std::string NameInFile() const { return NameInBank(ReadFile(BankPath()), kSlot); }
    std::size_t Files() const { return NamesIn(settings / "config").size(); }

    OpenEffect effect;
};

TEST_F(SlowDisk, HoldsUpNoSound) {
    const Playing audio(effect);
    std::map<std::string, int> calls;
    std::string stuck;
    const auto slow = [&](const char* call) {
        ++calls[call];
        if (!audio.GoesOn(10)) stuck = call;
        return stuck.empty();
    };
    {
        const TroubledDisk disk(slow);
        effect.SaveProgram(kSlot, "slow");
    }
    EXPECT_EQ(stuck, "") << "no block was ready before the disk answered";
    for (const char* call : {"open", "fwrite", "fflush", "fsync", "rename"})
        EXPECT_GT(calls[call], 0) << call << " was never slow";
    EXPECT_EQ(effect.messages, 0);
    EXPECT_EQ(NameInFile(), "slow");
    EXPECT_EQ(Files(), 1U);

    calls.clear(); // another instance is opened meanwhile
    {
        const TroubledDisk disk(slow);
        EXPECT_EQ(OpenEffect().NameAt(kSlot), "slow");
    }
    EXPECT_EQ(stuck, "");
    EXPECT_GT(calls["fread"], 0);

    // And while the user reads that it went wrong.
    bool heard = false;
    effect.SetMessageHook([&](std::int32_t, const std::string&) { heard = audio.GoesOn(10); });
    {
        const TroubledDisk disk([](const char* call) { return std::string(call) != "fsync"; });
        effect.SaveProgram(kSlot, "lost");
    }
    EXPECT_TRUE(heard);
    EXPECT_EQ(NameInFile(), "slow");
}

TEST_F(SlowDisk, AHostKilledAtAnyCallLeavesTheOldBankOrTheNewOne) {
    const int inASave = CallsOfASave();
    int newOnes = 0;
    std::size_t most = 0;
    for (int last = 0; last < inASave; ++last) {
        const pid_t host = ::fork();
        if (host == 0) {
            int calls = 0;
            const TroubledDisk disk([&](const char*) { return ++calls <= last || ::raise(SIGKILL) == 0; });
            effect.SaveProgram(kSlot, "new");
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(host, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << last;
        const std::string name = NameInFile();
        ASSERT_TRUE(name == "old" || name == "new") << last << ": " << name;
        if (name == "new") ++newOnes;
        most = std::max(most, Files());
        MakeOld(settings.path() / "config"); // what it had begun
        effect.SaveProgram(kSlot, "old");
        ASSERT_EQ(Files(), 1U) << last;
    }
    EXPECT_GT(newOnes, 0);
    EXPECT_LT(newOnes, inASave);
    EXPECT_GT(most, 1U);
    EXPECT_EQ(effect.messages, 0);
}

TEST_F(SlowDisk, PulledOutAtAnyCallLeavesAWholeBank) {
    const int inASave = CallsOfASave();
    bool reachedRename = false;
    std::set<std::string> full;
    for (int i = 0; i < 2 * inASave; ++i) {
        const int last = i / 2;
        const bool comesBack = i % 2 == 1; // one call fails, the next ones do not
        effect.messages = 0;
        int calls = 0;
        std::string failed; // first
        {
            const TroubledDisk disk([&](const char* call) {
                if (++calls == last + 1) failed = call;
                return calls <= last || (comesBack && calls > last + 1);
            });
            effect.SaveProgram(kSlot, "new");
        }
        // Said to have failed exactly when the old bank is still there.
        const std::string name = NameInFile();
        ASSERT_EQ(name, effect.messages == 0 ? "new" : "old") << last;
        ASSERT_LE(effect.messages, 1) << last;
        reachedRename = reachedRename || name == "new";
        ASSERT_EQ(effect.NameAt(kSlot), "new") << "in memory it stays";
        // As on a full disk: what was begun is taken away at once.
        if (comesBack && (failed == "fwrite" || failed == "fflush" || failed == "fsync")) {
            ASSERT_EQ(Files(), 1U) << failed;
            full.insert(failed);
        }
        effect.messages = 0;
        MakeOld(settings.path() / "config"); // the scrap that could not be removed from a disk that was gone
        effect.SaveProgram(kSlot, "old");
        ASSERT_EQ(effect.messages, 0) << last;
        ASSERT_EQ(Files(), 1U) << last;
    }
    EXPECT_TRUE(reachedRename);
    EXPECT_EQ(full.size(), 3U);
}

TEST_F(SlowDisk, PulledOutWhileItIsReadGivesWholeProgramsOrBuiltInOnes) {
    for (int last = 0;; ++last) {
        int calls = 0;
        const TroubledDisk disk([&](const char*) { return ++calls <= last; });
        const std::string name = OpenEffect().NameAt(kSlot);
        ASSERT_TRUE(name == "old" || name == "Empty") << last << ": " << name;
        if (calls > last) continue;
        EXPECT_EQ(name, "old"); // it was there all the while
        EXPECT_GT(last, 5);
        break;
    }
}

} // namespace
} // namespace vocafade::test
