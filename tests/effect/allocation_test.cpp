// SPDX-License-Identifier: MIT
// Counts what the audio thread allocates, under malloc itself, so nothing gets past it: whatever library asks.
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

namespace {
thread_local long allocations = 0;
} // namespace

// The program's own definitions take the place of the C library's, for all libraries in the process.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}
__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocations;
    return __libc_memalign(alignment, size);
}
}

namespace vocafade::test {
namespace {

template <typename Work>
long AllocationsOf(Work work) {
    const long before = allocations;
    work();
    return allocations - before;
}

using Allocations = WithSettings;

TEST_F(Allocations, NoneOnTheAudioThread) {
    Samples left;
    EXPECT_EQ(AllocationsOf([&] { left = Noise(9000, 1); }), 1) << "they are counted at all";
    AVocafade effect(SilentHost);
    effect.open();
    effect.setSampleRate(48000.0f);
    effect.setBlockSize(1024);
    effect.resume();
    const Samples right = Noise(9000, 2);
    Samples outL(9000);
    Samples outR(9000);
    std::vector<double> doubles[4];
    for (auto& buffer : doubles) {
        buffer.resize(9000);
    }
    EXPECT_EQ(AllocationsOf([&] {
                  float* in[] = {const_cast<float*>(left.data()), const_cast<float*>(right.data())};
                  float* out[] = {outL.data(), outR.data()};
                  double* doubleIn[] = {doubles[0].data(), doubles[1].data()};
                  double* doubleOut[] = {doubles[2].data(), doubles[3].data()};
                  for (const std::int32_t block : {1024, 1, 7, 1000, 341, 512, 0, 1024, 9000}) {
                      effect.processReplacing(in, out, block); // the last one was never announced
                      effect.processDoubleReplacing(doubleIn, doubleOut, block);
                      for (std::int32_t i = 0; i < kParameterCount; ++i) {
                          effect.setParameter(i, 0.5f);
                      }
                  }
              }),
              0);
}

TEST_F(Allocations, NoneWhenTheEngineStartsAnewAtTheSameSize) {
    AVocafade effect(SilentHost);
    effect.open();
    effect.setBlockSize(1024);
    EXPECT_EQ(AllocationsOf([&] {
                  effect.setSampleRate(96000.0f);
                  effect.setBlockSize(512);
                  effect.suspend();
                  effect.resume();
                  effect.startProcess();
              }),
              0);
}

} // namespace
} // namespace vocafade::test
