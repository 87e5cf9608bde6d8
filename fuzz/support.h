// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocafade::fuzz {

/// Ends the run with a finding unless `holds`.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// A file in memory with a path of its own, written anew for every input.
class MemoryFile {
  public:
    MemoryFile() : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)) {
        Require(descriptor_ >= 0, "a file in memory");
    }
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    void Write(std::string_view bytes) const {
        Require(::ftruncate(descriptor_, 0) == 0, "truncating");
        Require(::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
                "writing");
    }
    std::string Read() const {
        struct stat status {};
        Require(::fstat(descriptor_, &status) == 0, "status");
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        Require(::pread(descriptor_, bytes.data(), bytes.size(), 0) == status.st_size, "reading");
        return bytes;
    }

  private:
    int descriptor_;
};

/// A folder in memory where there is one; left behind empty at the end of a run.
inline std::string MakeFolder() {
    for (std::string name : {"/dev/shm/vocafade-fuzz-XXXXXX", "/tmp/vocafade-fuzz-XXXXXX"}) {
        if (::mkdtemp(name.data()) != nullptr) return name;
    }
    Require(false, "a folder to work in");
    return {};
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    Require(file != nullptr, "opening a file to write");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

/// Cuts an input into its parts at the first `separator`; the second is empty when there is none.
struct Parts {
    std::string_view first, second;
};
inline Parts Split(std::string_view bytes, std::string_view separator) {
    const std::size_t at = bytes.find(separator);
    if (at == std::string_view::npos) return {bytes, {}};
    return {bytes.substr(0, at), bytes.substr(at + separator.size())};
}

} // namespace vocafade::fuzz
