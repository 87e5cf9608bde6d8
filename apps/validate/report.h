// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/notes.h"

#include <array>
#include <fmt/format.h>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>

namespace vocafade::validate {

/// Ends a check: nothing more can be learnt. The sentence is a fault of the plug-in.
class Hopeless : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What one check has to say.
class Report {
  public:
    explicit Report(Notes& notes) : notes_(notes) {}

    /// [main-thread] Says what comes next, which a crash or a hang is reported with. Counts as an attempt.
    template <typename... Args>
    void Trying(fmt::format_string<Args...> format, Args&&... args) {
        Try(fmt::format(format, std::forward<Args>(args)...));
    }
    /// [any-thread] Each sentence is told once, and at most a dozen of each kind.
    template <typename... Args>
    void Fault(fmt::format_string<Args...> format, Args&&... args) {
        Tell(Kind::fault, fmt::format(format, std::forward<Args>(args)...));
    }
    template <typename... Args>
    void Remark(fmt::format_string<Args...> format, Args&&... args) {
        Tell(Kind::remark, fmt::format(format, std::forward<Args>(args)...));
    }
    template <typename... Args>
    void Measured(fmt::format_string<Args...> format, Args&&... args) {
        Tell(Kind::figure, fmt::format(format, std::forward<Args>(args)...));
    }
    void Tell(Kind kind, const std::string& sentence);

  private:
    void Try(const std::string& what);

    Notes& notes_;
    std::mutex mutex_;
    std::set<std::string> told_;
    std::array<int, 128> counts_{}; ///< by the letter of the kind
};

} // namespace vocafade::validate
