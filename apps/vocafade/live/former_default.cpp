// SPDX-License-Identifier: MIT
#include "apps/vocafade/live/former_default.h"

#include "base/file_replacement.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace vocafade::command {
namespace {

constexpr std::size_t kMostBytes = 1024; // of the text; names are far shorter

/// The folder for what programs keep between their runs; empty without a home.
std::string StateFolder() {
    const char* state = std::getenv("XDG_STATE_HOME"); // NOLINT(concurrency-mt-unsafe): nothing changes it
    if (state != nullptr && state[0] == '/') return state;
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nothing changes it
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/state" : std::string();
}

} // namespace

FormerDefault::FormerDefault(bool make) {
    std::string folder = StateFolder();
    if (folder.empty()) return;
    folder += "/vocafade";
    path_ = folder + "/default-output";
    if (make && !MakeFolders(folder)) return;
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | (make ? O_CREAT : 0), 0600);
    if (descriptor_ < 0 || ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return;
    ::close(descriptor_);
    descriptor_ = -1;
}

FormerDefault::~FormerDefault() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

std::optional<std::string> FormerDefault::Read() const {
    if (descriptor_ < 0) return std::nullopt;
    std::array<char, kMostBytes> text{};
    const ssize_t count = ::pread(descriptor_, text.data(), text.size(), 0);
    return std::string(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
}

void FormerDefault::Write(const std::string& chosen) {
    if (descriptor_ < 0 || chosen.size() > kMostBytes) return;
    // Where the disk is full the default cannot be given back after a kill; that ends no sound.
    if (::ftruncate(descriptor_, 0) != 0 || ::pwrite(descriptor_, chosen.data(), chosen.size(), 0) < 0)
        return;
}

void FormerDefault::Forget() {
    if (descriptor_ >= 0) ::unlink(path_.c_str());
}

} // namespace vocafade::command
