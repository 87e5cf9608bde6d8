// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vocafade::validate {

/// A check as the runner lists it.
struct CheckEntry {
    int level;
    std::string name;
    int seconds; ///< without anything new, after which the plug-in is taken to hang
    std::string summary;
};

/// What came of one check.
struct Outcome {
    std::vector<std::string> faults;
    std::vector<std::string> remarks;
    std::vector<std::string> measures;
    std::vector<std::string> skips;
    std::uint64_t attempts = 0;
    double seconds = 0.0;
    std::string output; ///< the end of what the plug-in (or a sanitizer) wrote
    bool unusable = false;
};

/// Starts the runner: one process a check, in a settings folder of its own, so that nothing of the user's is
/// read or written.
class RunnerProcess {
  public:
    /// Finds the runner beside the command or where it is installed. Throws `command::Failure`.
    RunnerProcess();
    ~RunnerProcess();
    RunnerProcess(const RunnerProcess&) = delete;
    RunnerProcess& operator=(const RunnerProcess&) = delete;

    std::vector<CheckEntry> List() const;
    Outcome Run(const CheckEntry& check, const std::filesystem::path& plugin, std::uint32_t seed,
                bool twofold) const;

  private:
    std::filesystem::path runner_;
    std::filesystem::path home_;
};

} // namespace vocafade::validate
