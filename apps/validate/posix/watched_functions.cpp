// SPDX-License-Identifier: MIT
// Functions of the C library, in front of which ours stand.
#include "apps/validate/call_counter.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/select.h>
#include <unistd.h>

namespace vocafade::validate {
namespace {
std::atomic<std::int64_t> liveBytes{0};
} // namespace

std::int64_t LiveBytes() { return liveBytes; }

void AudioWatch::Prepare(const host::SharedObject&) {}

#ifndef VOCAFADE_SANITIZED

namespace {

/// The C library's own function behind one of ours. `version` where there are several of the name and the
/// first found would be an old one.
template <typename Function>
Function Real(const char* name, const char* version = nullptr) {
    void* found = version != nullptr ? ::dlvsym(RTLD_NEXT, name, version) : ::dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::fprintf(stderr, "the C library has no %s\n", name);
        std::abort();
    }
    return reinterpret_cast<Function>(found);
}

/// A block that was just handed out.
void* Given(void* block) {
    callCounter.NoteAllocation();
    if (block != nullptr)
        liveBytes.fetch_add(static_cast<std::int64_t>(::malloc_usable_size(block)),
                            std::memory_order_relaxed);
    return block;
}

/// So many bytes were given back.
void NoteFreed(std::size_t bytes) {
    liveBytes.fetch_sub(static_cast<std::int64_t>(bytes), std::memory_order_relaxed);
}

void NoteSleep(const char* name) { callCounter.NoteSleep(name); }
void NoteFileCall(const char* name) { callCounter.NoteFileCall(name); }

template <typename TryLock, typename Lock>
int WatchedLock(TryLock tryLock, Lock lock) {
    if (!callCounter.watching) return lock();
    int answer = EBUSY;
    callCounter.CountLock([&] { return (answer = tryLock()) != EBUSY; }, [&] { answer = lock(); });
    return answer;
}

} // namespace

#endif

} // namespace vocafade::validate

#ifndef VOCAFADE_SANITIZED

// Ours stand in front of the C library's for everything in the process.
using vocafade::validate::callCounter;
using vocafade::validate::Given;
using vocafade::validate::NoteFileCall;
using vocafade::validate::NoteFreed;
using vocafade::validate::NoteSleep;
using vocafade::validate::Real;
using vocafade::validate::WatchedLock;

#define VOCAFADE_WATCHED __attribute__((visibility("default")))

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* pointer);

VOCAFADE_WATCHED void* malloc(std::size_t size) { return Given(__libc_malloc(size)); }
VOCAFADE_WATCHED void* calloc(std::size_t count, std::size_t size) {
    return Given(__libc_calloc(count, size));
}
VOCAFADE_WATCHED void* realloc(void* pointer, std::size_t size) {
    const std::size_t before = pointer != nullptr ? ::malloc_usable_size(pointer) : 0;
    void* moved = __libc_realloc(pointer, size);
    if (moved != nullptr || size == 0) NoteFreed(before);
    return Given(moved);
}
VOCAFADE_WATCHED void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Given(__libc_memalign(alignment, size));
}
VOCAFADE_WATCHED void* memalign(std::size_t alignment, std::size_t size) {
    return Given(__libc_memalign(alignment, size));
}
VOCAFADE_WATCHED int posix_memalign(void** pointer, std::size_t alignment, std::size_t size) {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) return EINVAL;
    void* memory = Given(__libc_memalign(alignment, size));
    if (memory == nullptr) return ENOMEM;
    *pointer = memory;
    return 0;
}
VOCAFADE_WATCHED void free(void* pointer) {
    if (pointer != nullptr) {
        callCounter.NoteFree();
        NoteFreed(::malloc_usable_size(pointer));
    }
    __libc_free(pointer);
}

// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in brackets
#define VOCAFADE_WATCH_LOCK(type, name, tryName)                                                             \
    VOCAFADE_WATCHED int name(type* lock) noexcept {                                                         \
        static const auto real = Real<int (*)(type*)>(#name);                                                \
        static const auto realTry = Real<int (*)(type*)>(#tryName);                                          \
        return WatchedLock([&] { return realTry(lock); }, [&] { return real(lock); });                       \
    }
VOCAFADE_WATCH_LOCK(pthread_mutex_t, pthread_mutex_lock, pthread_mutex_trylock)
VOCAFADE_WATCH_LOCK(pthread_rwlock_t, pthread_rwlock_rdlock, pthread_rwlock_tryrdlock)
VOCAFADE_WATCH_LOCK(pthread_rwlock_t, pthread_rwlock_wrlock, pthread_rwlock_trywrlock)

#define VOCAFADE_WATCH(note, version, result, name, parameters, arguments)                                   \
    VOCAFADE_WATCHED result name parameters {                                                                \
        static const auto real = Real<result(*) parameters>(#name, version);                                 \
        note(#name);                                                                                         \
        return real arguments;                                                                               \
    }
VOCAFADE_WATCH(NoteSleep, "GLIBC_2.3.2", int, pthread_cond_wait,
               (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
VOCAFADE_WATCH(NoteSleep, nullptr, int, pthread_join, (pthread_t thread, void** result), (thread, result))
VOCAFADE_WATCH(NoteSleep, nullptr, int, sem_wait, (sem_t * semaphore), (semaphore))
VOCAFADE_WATCH(NoteSleep, nullptr, int, nanosleep, (const timespec* wanted, timespec* left), (wanted, left))
VOCAFADE_WATCH(NoteSleep, "GLIBC_2.17", int, clock_nanosleep,
               (clockid_t clock, int flags, const timespec* wanted, timespec* left),
               (clock, flags, wanted, left))
VOCAFADE_WATCH(NoteSleep, nullptr, int, usleep, (useconds_t microseconds), (microseconds))
VOCAFADE_WATCH(NoteSleep, nullptr, unsigned, sleep, (unsigned seconds), (seconds))
VOCAFADE_WATCH(NoteSleep, nullptr, int, poll, (pollfd * descriptors, nfds_t count, int timeout),
               (descriptors, count, timeout))
VOCAFADE_WATCH(NoteSleep, nullptr, int, select,
               (int count, fd_set* reading, fd_set* writing, fd_set* failing, timeval* timeout),
               (count, reading, writing, failing, timeout))
VOCAFADE_WATCH(NoteFileCall, nullptr, ssize_t, read, (int descriptor, void* bytes, std::size_t count),
               (descriptor, bytes, count))
VOCAFADE_WATCH(NoteFileCall, nullptr, ssize_t, write, (int descriptor, const void* bytes, std::size_t count),
               (descriptor, bytes, count))
VOCAFADE_WATCH(NoteFileCall, "GLIBC_2.2.5", std::FILE*, fopen, (const char* path, const char* mode),
               (path, mode))
VOCAFADE_WATCH(NoteFileCall, nullptr, std::size_t, fwrite,
               (const void* bytes, std::size_t size, std::size_t count, std::FILE* file),
               (bytes, size, count, file))
VOCAFADE_WATCH(NoteFileCall, nullptr, int, fputs, (const char* text, std::FILE* file), (text, file))
VOCAFADE_WATCH(NoteFileCall, nullptr, int, puts, (const char* text), (text))
VOCAFADE_WATCH(NoteFileCall, nullptr, int, vfprintf,
               (std::FILE * file, const char* format, std::va_list arguments), (file, format, arguments))
// NOLINTEND(bugprone-macro-parentheses)

VOCAFADE_WATCHED int open(const char* path, int flags, ...) {
    static const auto real = Real<int (*)(const char*, int, ...)>("open");
    NoteFileCall("open");
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = static_cast<mode_t>(va_arg(rest, int)); // read even where none was passed: it is unused
    va_end(rest);
    return real(path, flags, mode);
}
VOCAFADE_WATCHED int fprintf(std::FILE* file, const char* format, ...) {
    std::va_list rest;
    va_start(rest, format);
    const int answer = vfprintf(file, format, rest); // which notes the call
    va_end(rest);
    return answer;
}
VOCAFADE_WATCHED int printf(const char* format, ...) {
    std::va_list rest;
    va_start(rest, format);
    const int answer = vfprintf(stdout, format, rest);
    va_end(rest);
    return answer;
}
}

#endif
