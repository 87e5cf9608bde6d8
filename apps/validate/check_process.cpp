// SPDX-License-Identifier: MIT
#include "apps/validate/check_process.h"

#include "apps/validate/carry_out.h"
#include "apps/validate/child.h"

#include <algorithm>
#include <chrono>
#include <sstream>

namespace vocafade::validate {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr int kMostPatience = 6; // times: how long a check goes on at most, however much it tries
#ifdef VOCAFADE_SANITIZED
constexpr int kPatience = 20; // times: the sanitizers are slow
#else
constexpr int kPatience = 1;
#endif

enum class Ending { itself, hung, endless };

/// Waits until it ends, has tried nothing new for `patience` or goes on for much longer than that.
Ending Wait(Child& child, Clock::duration patience) {
    const auto end = Clock::now() + kMostPatience * patience;
    auto until = Clock::now() + patience;
    std::uint64_t attempts = 0;
    Ending ending = Ending::itself;
    while (!child.HasEnded()) {
        if (attempts != child.notes().attempts) until = Clock::now() + patience;
        attempts = child.notes().attempts;
        if (Clock::now() < std::min(until, end)) continue;
        ending = Clock::now() < end ? Ending::hung : Ending::endless;
        child.Kill();
    }
    return ending;
}

/// How a process ended that should not have, as a finding; the crash report, if there is one, becomes part of
/// it.
void AddEnding(Ending ending, const Child& child, const std::string& when, double patience,
               Outcome& outcome) {
    std::vector<Finding>& findings = outcome.findings;
    const auto fault = [&](const std::string& how) { findings.push_back({Kind::fault, how + when}); };
    if (ending == Ending::endless) {
        findings.push_back({Kind::skipped, "it is so slow that the check was given up" + when});
    } else if (ending == Ending::hung) {
        fault(fmt::format("hung for {:.0f} seconds", patience));
    } else if (std::string how = child.Crash(); !how.empty()) {
        if (!findings.empty() && findings.back().sentence.starts_with("crashed (")) {
            how = findings.back().sentence;
            findings.pop_back();
        }
        fault(how);
    } else if (child.Status() == kUnusable) {
        outcome.unusable = true;
    } else if (child.Status() != kDone) {
        fault(fmt::format("ended the process with {}", child.Status()));
    }
}

} // namespace

bool Outcome::has(Kind kind) const {
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& f) { return f.kind == kind; });
}

Outcome RunCheck(const Check& check, Subject& subject) {
    const auto begin = Clock::now();
    const seconds patience(check.seconds * kPatience);
    Child child(check, subject);
    const Ending ending = Wait(child, patience);
    const Notes& notes = child.notes();
    Outcome outcome;
    std::istringstream lines{std::string(notes.text())};
    for (std::string line; std::getline(lines, line);)
        if (!line.empty()) outcome.findings.push_back({static_cast<Kind>(line[0]), line.substr(1)});
    const std::string trying = notes.trying.data();
    AddEnding(ending, child, trying.empty() ? "" : " while " + trying, static_cast<double>(patience.count()),
              outcome);
    outcome.attempts = notes.attempts;
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    outcome.output = child.Output();
    const bool well = ending == Ending::itself && child.Crash().empty() && child.Status() == kDone;
    if (well && !outcome.output.empty())
        outcome.findings.push_back({Kind::remark, "it writes to its host's output: " +
                                                      outcome.output.substr(0, outcome.output.find('\n'))});
    return outcome;
}

} // namespace vocafade::validate
