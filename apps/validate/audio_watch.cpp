// SPDX-License-Identifier: MIT
#include "apps/validate/audio_watch.h"

#include <algorithm>
#include <cstddef>

#ifndef VOCAFADE_SANITIZED
#include <atomic>
#include <cerrno>
#include <cstdarg>
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
#else
// Their header for these is not installed with every compiler.
extern "C" { // NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp)
int __sanitizer_install_malloc_and_free_hooks(void (*given)(const volatile void*, std::size_t),
                                              void (*taken)(const volatile void*));
std::size_t __sanitizer_get_current_allocated_bytes();
} // NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp)
#endif

namespace vocafade::validate {
namespace {
thread_local bool watching = false;
thread_local AudioWatch::Counts counts;
} // namespace

AudioWatch::Counts& AudioWatch::Counts::operator+=(const Counts& other) {
    allocations += other.allocations;
    frees += other.frees;
    locks += other.locks;
    lockWaits += other.lockWaits;
    sleeps += other.sleeps;
    fileCalls += other.fileCalls;
    longestLockWait = std::max(longestLockWait, other.longestLockWait);
    if (other.sleeps > 0) lastSleep = other.lastSleep;
    if (other.fileCalls > 0) lastFileCall = other.lastFileCall;
    return *this;
}

AudioWatch::~AudioWatch() { watching = false; }

AudioWatch::Counts AudioWatch::Stop() {
    watching = false;
    return counts;
}

#ifdef VOCAFADE_SANITIZED

bool AudioWatch::CountsCalls() { return false; }

std::int64_t LiveBytes() { return static_cast<std::int64_t>(::__sanitizer_get_current_allocated_bytes()); }

AudioWatch::AudioWatch() {
    static const int hooks = ::__sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) {
            if (watching) ++counts.allocations;
        },
        [](const volatile void* block) {
            if (watching && block != nullptr) ++counts.frees;
        });
    static_cast<void>(hooks);
    counts = {};
    watching = true;
}

#else

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

std::atomic<std::int64_t> liveBytes{0};

/// A block that was just handed out.
void* Given(void* block) {
    if (watching) ++counts.allocations;
    if (block != nullptr)
        liveBytes.fetch_add(static_cast<std::int64_t>(::malloc_usable_size(block)),
                            std::memory_order_relaxed);
    return block;
}

/// So many bytes were given back.
void NoteFreed(std::size_t bytes) {
    liveBytes.fetch_sub(static_cast<std::int64_t>(bytes), std::memory_order_relaxed);
}

double Now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void NoteSleep(const char* name) {
    if (!watching) return;
    ++counts.sleeps;
    counts.lastSleep = name;
}

void NoteFileCall(const char* name) {
    if (!watching) return;
    ++counts.fileCalls;
    counts.lastFileCall = name;
}

template <typename TryLock, typename Lock>
int WatchedLock(TryLock tryLock, Lock lock) {
    if (!watching) return lock();
    ++counts.locks;
    const int got = tryLock();
    if (got != EBUSY) return got;
    ++counts.lockWaits;
    const double begin = Now();
    const int answer = lock();
    counts.longestLockWait = std::max(counts.longestLockWait, Now() - begin);
    return answer;
}

} // namespace

bool AudioWatch::CountsCalls() { return true; }

std::int64_t LiveBytes() { return liveBytes; }

AudioWatch::AudioWatch() {
    counts = {};
    watching = true;
}

#endif

} // namespace vocafade::validate

#ifndef VOCAFADE_SANITIZED

// Ours stand in front of the C library's for everything in the process.
using vocafade::validate::counts;
using vocafade::validate::Given;
using vocafade::validate::NoteFileCall;
using vocafade::validate::NoteFreed;
using vocafade::validate::NoteSleep;
using vocafade::validate::Real;
using vocafade::validate::WatchedLock;
using vocafade::validate::watching;

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
    if (watching && pointer != nullptr) ++counts.frees;
    if (pointer != nullptr) NoteFreed(::malloc_usable_size(pointer));
    __libc_free(pointer);
}

VOCAFADE_WATCHED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto real = Real<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    static const auto realTry = Real<int (*)(pthread_mutex_t*)>("pthread_mutex_trylock");
    return WatchedLock([&] { return realTry(mutex); }, [&] { return real(mutex); });
}
VOCAFADE_WATCHED int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    static const auto real = Real<int (*)(pthread_rwlock_t*)>("pthread_rwlock_rdlock");
    static const auto realTry = Real<int (*)(pthread_rwlock_t*)>("pthread_rwlock_tryrdlock");
    return WatchedLock([&] { return realTry(lock); }, [&] { return real(lock); });
}
VOCAFADE_WATCHED int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    static const auto real = Real<int (*)(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    static const auto realTry = Real<int (*)(pthread_rwlock_t*)>("pthread_rwlock_trywrlock");
    return WatchedLock([&] { return realTry(lock); }, [&] { return real(lock); });
}

VOCAFADE_WATCHED int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    static const auto real =
        Real<int (*)(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait", "GLIBC_2.3.2");
    NoteSleep("pthread_cond_wait");
    return real(condition, mutex);
}
VOCAFADE_WATCHED int pthread_join(pthread_t thread, void** result) {
    static const auto real = Real<int (*)(pthread_t, void**)>("pthread_join");
    NoteSleep("pthread_join");
    return real(thread, result);
}
VOCAFADE_WATCHED int sem_wait(sem_t* semaphore) {
    static const auto real = Real<int (*)(sem_t*)>("sem_wait");
    NoteSleep("sem_wait");
    return real(semaphore);
}
VOCAFADE_WATCHED int nanosleep(const timespec* wanted, timespec* left) {
    static const auto real = Real<int (*)(const timespec*, timespec*)>("nanosleep");
    NoteSleep("nanosleep");
    return real(wanted, left);
}
VOCAFADE_WATCHED int clock_nanosleep(clockid_t clock, int flags, const timespec* wanted, timespec* left) {
    static const auto real =
        Real<int (*)(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep", "GLIBC_2.17");
    NoteSleep("clock_nanosleep");
    return real(clock, flags, wanted, left);
}
VOCAFADE_WATCHED int usleep(useconds_t microseconds) {
    static const auto real = Real<int (*)(useconds_t)>("usleep");
    NoteSleep("usleep");
    return real(microseconds);
}
VOCAFADE_WATCHED unsigned sleep(unsigned seconds) {
    static const auto real = Real<unsigned (*)(unsigned)>("sleep");
    NoteSleep("sleep");
    return real(seconds);
}
VOCAFADE_WATCHED int poll(pollfd* descriptors, nfds_t count, int timeout) {
    static const auto real = Real<int (*)(pollfd*, nfds_t, int)>("poll");
    NoteSleep("poll");
    return real(descriptors, count, timeout);
}
VOCAFADE_WATCHED int select(int count, fd_set* reading, fd_set* writing, fd_set* failing, timeval* timeout) {
    static const auto real = Real<int (*)(int, fd_set*, fd_set*, fd_set*, timeval*)>("select");
    NoteSleep("select");
    return real(count, reading, writing, failing, timeout);
}

VOCAFADE_WATCHED int open(const char* path, int flags, ...) {
    static const auto real = Real<int (*)(const char*, int, ...)>("open");
    NoteFileCall("open");
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = static_cast<mode_t>(va_arg(rest, int)); // read even where none was passed: it is unused
    va_end(rest);
    return real(path, flags, mode);
}
VOCAFADE_WATCHED ssize_t read(int descriptor, void* bytes, std::size_t count) {
    static const auto real = Real<ssize_t (*)(int, void*, std::size_t)>("read");
    NoteFileCall("read");
    return real(descriptor, bytes, count);
}
VOCAFADE_WATCHED ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    static const auto real = Real<ssize_t (*)(int, const void*, std::size_t)>("write");
    NoteFileCall("write");
    return real(descriptor, bytes, count);
}
VOCAFADE_WATCHED std::FILE* fopen(const char* path, const char* mode) {
    static const auto real = Real<std::FILE* (*)(const char*, const char*)>("fopen", "GLIBC_2.2.5");
    NoteFileCall("fopen");
    return real(path, mode);
}
VOCAFADE_WATCHED std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* file) {
    static const auto real =
        Real<std::size_t (*)(const void*, std::size_t, std::size_t, std::FILE*)>("fwrite");
    NoteFileCall("fwrite");
    return real(bytes, size, count, file);
}
VOCAFADE_WATCHED int fputs(const char* text, std::FILE* file) {
    static const auto real = Real<int (*)(const char*, std::FILE*)>("fputs");
    NoteFileCall("fputs");
    return real(text, file);
}
VOCAFADE_WATCHED int puts(const char* text) {
    static const auto real = Real<int (*)(const char*)>("puts");
    NoteFileCall("puts");
    return real(text);
}
VOCAFADE_WATCHED int vfprintf(std::FILE* file, const char* format, std::va_list arguments) {
    static const auto real = Real<int (*)(std::FILE*, const char*, std::va_list)>("vfprintf");
    NoteFileCall("vfprintf");
    return real(file, format, arguments);
}
VOCAFADE_WATCHED int fprintf(std::FILE* file, const char* format, ...) {
    NoteFileCall("fprintf");
    std::va_list rest;
    va_start(rest, format);
    const int answer = std::vfprintf(file, format, rest);
    va_end(rest);
    return answer;
}
VOCAFADE_WATCHED int printf(const char* format, ...) {
    NoteFileCall("printf");
    std::va_list rest;
    va_start(rest, format);
    const int answer = std::vfprintf(stdout, format, rest);
    va_end(rest);
    return answer;
}
}

#endif
