// SPDX-License-Identifier: MIT
#include "tests/support/counted_memory.h"

#ifdef VOCAFADE_SANITIZED

long vocafade::test::LiveBlocks() { return -1; }

long vocafade::test::AllocationsOfThread() { return -1; }

#else

#include <atomic>
#include <cerrno>
#include <cstddef>

// The program's own definitions take the place of the C library's, for all libraries in the process.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace {
std::atomic<long> live{0};
thread_local long allocations = 0;

void* Count(void* block) {
    ++allocations;
    if (block != nullptr) live.fetch_add(1, std::memory_order_relaxed);
    return block;
}
} // namespace

long vocafade::test::LiveBlocks() { return live.load(); }

long vocafade::test::AllocationsOfThread() { return allocations; }

extern "C" {
__attribute__((visibility("default"))) void* malloc(std::size_t size) { return Count(__libc_malloc(size)); }
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
    return Count(__libc_calloc(count, size));
}
__attribute__((visibility("default"))) void* memalign(std::size_t alignment, std::size_t size) {
    return Count(__libc_memalign(alignment, size));
}
__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Count(__libc_memalign(alignment, size));
}
__attribute__((visibility("default"))) int posix_memalign(void** block, std::size_t alignment,
                                                          std::size_t size) {
    *block = Count(__libc_memalign(alignment, size));
    return *block != nullptr ? 0 : ENOMEM;
}
__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
    void* moved = __libc_realloc(block, size);
    if (block == nullptr) return Count(moved);
    ++allocations;
    if (moved == nullptr && size == 0) live.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}
__attribute__((visibility("default"))) void free(void* block) {
    if (block != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(block);
}
}

#endif
