// SPDX-License-Identifier: MIT
// The program's own definitions of file calls stand in front of the C library's, for all libraries in the
// process.
#include "tests/faults/troubled_disk.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

thread_local const std::function<bool(const char*)>* question = nullptr;

bool Answers(const char* call) {
    const auto* ask = std::exchange(question, nullptr); // what it does itself is not asked about
    if (ask == nullptr) return true;
    const bool there = (*ask)(call);
    question = ask;
    if (!there) errno = EIO;
    return there;
}

} // namespace

namespace vocafade::test {

TroubledDisk::TroubledDisk(std::function<bool(const char*)> atCall) : atCall_(std::move(atCall)) {
    question = &atCall_;
}
TroubledDisk::~TroubledDisk() { question = nullptr; }

} // namespace vocafade::test

// With `noexcept` where the headers promise that.
#define TROUBLED(Result, name, parameters, arguments, failure, ...)                                          \
    extern "C" __attribute__((visibility("default"))) Result name parameters __VA_ARGS__ {                   \
        static const auto real = reinterpret_cast<decltype(&::name)>(::dlsym(RTLD_NEXT, #name));             \
        return Answers(#name) ? real arguments : (failure);                                                  \
    }

TROUBLED(int, fsync, (int file), (file), -1)
TROUBLED(int, fflush, (std::FILE * file), (file), EOF)
TROUBLED(std::size_t, fwrite, (const void* bytes, std::size_t size, std::size_t count, std::FILE* file),
         (bytes, size, count, file), 0)
TROUBLED(std::size_t, fread, (void* bytes, std::size_t size, std::size_t count, std::FILE* file),
         (bytes, size, count, file), 0)
TROUBLED(DIR*, opendir, (const char* path), (path), nullptr)
TROUBLED(dirent*, readdir, (DIR * folder), (folder), nullptr)
TROUBLED(int, rename, (const char* from, const char* to), (from, to), -1, noexcept)
TROUBLED(int, unlink, (const char* path), (path), -1, noexcept)
TROUBLED(int, mkdir, (const char* path, mode_t mode), (path, mode), -1, noexcept)
TROUBLED(int, stat, (const char* path, struct stat* answer), (path, answer), -1, noexcept)
TROUBLED(int, fchmod, (int file, mode_t mode), (file, mode), -1, noexcept)
TROUBLED(int, flock, (int file, int operation), (file, operation), -1, noexcept)
TROUBLED(ssize_t, readlink, (const char* path, char* bytes, std::size_t size), (path, bytes, size), -1,
         noexcept)

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
    static const auto real = reinterpret_cast<int (*)(const char*, int, ...)>(::dlsym(RTLD_NEXT, "open"));
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = static_cast<mode_t>(va_arg(rest, int)); // read even where none was passed: it is unused
    va_end(rest);
    return Answers("open") ? real(path, flags, mode) : -1;
}
