// SPDX-License-Identifier: MIT
#include "apps/validate/report.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vocafade::validate {
namespace {

constexpr std::size_t kMostOfAKind = 12;

bool IsOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

} // namespace

Report::Report() : descriptor_(IsOpen(kFindingsDescriptor) ? kFindingsDescriptor : STDOUT_FILENO) {
    if (!IsOpen(kProgressDescriptor)) return;
    void* memory =
        ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED, kProgressDescriptor, 0);
    if (memory != MAP_FAILED) progress_ = static_cast<Progress*>(memory);
}

Report::~Report() {
    if (progress_ != nullptr) ::munmap(progress_, sizeof(Progress));
}

void Report::Try(const std::string& what) {
    if (progress_ == nullptr) return;
    ++progress_->attempts;
    const std::size_t length = std::min(what.size(), progress_->trying.size() - 1);
    std::memcpy(progress_->trying.data(), what.data(), length);
    progress_->trying[length] = '\0';
}

void Report::Tell(char letter, const std::string& sentence) {
    const std::lock_guard hold(mutex_);
    if (!told_.insert(letter + sentence).second) return;
    std::size_t& count = letter == kFaultLetter ? faults_ : others_;
    if (++count > kMostOfAKind) return;
    std::string line = fmt::format("{} {}", letter, count < kMostOfAKind ? sentence : "and more of the kind");
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t written = ::write(descriptor_, line.data() + done, line.size() - done);
        if (written <= 0) return; // the command is gone, and nobody is left to tell
        done += static_cast<std::size_t>(written);
    }
}

} // namespace vocafade::validate
