// SPDX-License-Identifier: MIT
// What the audio thread does while the editor, the session and the user keep the other thread busy: it takes
// no lock that the other takes, and it does not allocate. Under the thread sanitizer, which has functions of
// its own for both, it shows that the two do not race.
#include "tests/lv2/panel_host.h"
#include "tests/support/temp_folder.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <atomic>
#include <dlfcn.h>
#include <pthread.h>
#include <set>
#include <thread>

namespace {

/// The locks that a thread took, each once; no memory is needed to note one.
struct Locks {
    static constexpr std::size_t kMost = 4096;
    std::array<const void*, kMost> taken{};
    std::size_t count = 0;

    void Note(const void* lock) {
        auto* const end = taken.data() + count;
        if (count < kMost && std::find(taken.data(), end, lock) == end) taken[count++] = lock;
    }
};

thread_local Locks* notes = nullptr;
thread_local int* allocations = nullptr;

} // namespace

#ifndef VOCAFADE_SANITIZED
extern "C" {
void* __libc_malloc(std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
    if (allocations != nullptr) ++*allocations;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto real =
        reinterpret_cast<int (*)(pthread_mutex_t*)>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (notes != nullptr) notes->Note(mutex);
    return real(mutex);
}
}
#endif

namespace vocafade::test {
namespace {

class Lv2Threads : public WithSettings {};

TEST_F(Lv2Threads, TheAudioThreadNeverWaitsForTheOther) {
    XServer server;
    XUser user;
    Lv2Bundle bundle;
    Lv2Plugin plugin(bundle);
    StereoSamples in = Song(4096);
    StereoSamples out = in;
    PanelHost panel(user, plugin);
    ASSERT_TRUE(panel.IsOpen());
    panel.deaf = true; // the ports are the audio thread's
    static Locks audioLocks;
    static Locks otherLocks;
    static int audioAllocations;
    std::atomic<int> rounds{0};
    std::atomic<bool> done{false};

    std::thread audio([&] {
        notes = &audioLocks;
        allocations = &audioAllocations;
        for (int block = 0; rounds < 30; ++block) {
            plugin.Control(kParameterOnOff) = static_cast<float>(block / 50 % 2);
            plugin.Control(kParameterPosition) = static_cast<float>(block % 128);
            plugin.Control(kParameterLoFreq) = static_cast<float>(20 + block % 5000);
            const auto place = static_cast<std::size_t>(block % 64) * 64;
            float* ins[] = {&in.left[place], &in.right[place]};
            float* outs[] = {&out.left[place], &out.right[place]};
            plugin.RunBlock(ins, outs, 64);
        }
        allocations = nullptr;
        notes = nullptr;
        done = true;
    });
    std::thread session([&] { // hosts may save and restore where they like, not on the editor's thread alone
        while (!done)
            plugin.Restore(*plugin.Save(false));
    });
    notes = &otherLocks;
    for (int i = 0; !done; ++i) {
        panel.Press({149, 60 + i % 100});
        panel.MoveTo({149, 60 + (i * 7) % 100});
        panel.Release({149, 70});
        panel.Click({35, 15});
        panel.Tell(kParameterHiFreq, static_cast<float>(1000 + i));
        ++rounds;
    }
    notes = nullptr;
    audio.join();
    session.join();

    EXPECT_EQ(audioAllocations, 0);
    const std::set<const void*> others(otherLocks.taken.begin(), otherLocks.taken.begin() + otherLocks.count);
#ifndef VOCAFADE_SANITIZED
    EXPECT_GT(audioLocks.count, 0U) << "the effect's own two are counted";
    EXPECT_GT(others.size(), 0U);
    EXPECT_LT(others.size(), Locks::kMost);
#endif
    for (std::size_t i = 0; i < audioLocks.count; ++i)
        EXPECT_FALSE(others.contains(audioLocks.taken[i])) << "a lock of both threads";
}

} // namespace
} // namespace vocafade::test
