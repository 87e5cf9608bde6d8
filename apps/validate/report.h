// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/protocol.h"

#include <fmt/format.h>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vocafade::validate {

/// Ends a check: nothing more can be learnt. The sentence is a fault of the plug-in.
class Hopeless : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What one check has to say, in the runner.
class Report {
  public:
    /// Takes over the two descriptors of the protocol. Without them (the runner was started by hand) findings
    /// go to the standard output.
    Report();
    ~Report();
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    /// [main-thread] Says what comes next; it is what a crash or a hang is reported with. Counts as an
    /// attempt.
    template <typename... Args>
    void Trying(fmt::format_string<Args...> format, Args&&... args) {
        Try(fmt::format(format, std::forward<Args>(args)...));
    }
    /// [any-thread] Each sentence is told once, and not more than a handful of each kind.
    template <typename... Args>
    void Fault(fmt::format_string<Args...> format, Args&&... args) {
        Tell(kFaultLetter, fmt::format(format, std::forward<Args>(args)...));
    }
    template <typename... Args>
    void Remark(fmt::format_string<Args...> format, Args&&... args) {
        Tell(kRemarkLetter, fmt::format(format, std::forward<Args>(args)...));
    }
    template <typename... Args>
    void Skipped(fmt::format_string<Args...> format, Args&&... args) {
        Tell(kSkippedLetter, fmt::format(format, std::forward<Args>(args)...));
    }
    template <typename... Args>
    void Measured(fmt::format_string<Args...> format, Args&&... args) {
        Tell(kMeasureLetter, fmt::format(format, std::forward<Args>(args)...));
    }

    int findingsDescriptor() const { return descriptor_; }

  private:
    void Try(const std::string& what);
    void Tell(char letter, const std::string& sentence);

    std::mutex mutex_;
    int descriptor_;
    Progress* progress_ = nullptr;
    std::set<std::string> told_;
    std::size_t faults_ = 0;
    std::size_t others_ = 0;
};

} // namespace vocafade::validate
