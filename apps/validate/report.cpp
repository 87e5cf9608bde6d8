// SPDX-License-Identifier: MIT
#include "apps/validate/report.h"

namespace vocafade::validate {

void Report::Try(const std::string& what) {
    ++notes_.attempts;
    notes_.trying[what.copy(notes_.trying.data(), notes_.trying.size() - 1)] = '\0';
}

void Report::Tell(Kind kind, const std::string& sentence) {
    constexpr int kMostOfAKind = 12;
    const char letter = static_cast<char>(kind);
    const std::lock_guard hold(mutex_);
    if (!told_.insert(letter + sentence).second) return;
    const int count = ++counts_[static_cast<unsigned char>(letter)];
    if (count > kMostOfAKind) return;
    std::string line = letter + (count < kMostOfAKind ? sentence : "and more of the kind");
    std::replace(line.begin(), line.end(), '\n', ' ');
    notes_.Add(line + '\n');
}

} // namespace vocafade::validate
