// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/run_songs.h"

#include "apps/vocafade/render/copy_file.h"
#include "apps/vocafade/render/job_pool.h"
#include "apps/vocafade/render/run_log.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/text.h"

#include <atomic>
#include <chrono>
#include <fmt/format.h>
#include <optional>
#include <system_error>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

/// Less is missing where programs count the bytes of a header wrong.
constexpr double kMissingSeconds = 0.05;

/// How many samples were clipped, and what helps: 3 dB less than the plug-in's Output had.
std::string ClippingText(const RenderReport& report) {
    constexpr double kStep = 3.0;
    const std::string help = report.outputLevel ? fmt::format("--output {:g}", *report.outputLevel - kStep)
                                                : std::string("a lower level");
    if (report.clipped == 1) return "1 sample went beyond full scale and was clipped; try " + help;
    return fmt::format("{} samples went beyond full scale and were clipped; try {}", report.clipped, help);
}

std::vector<std::string> WarningsOf(const RenderReport& report, const RenderOptions& options) {
    std::vector<std::string> warnings;
    if (report.announcedSeconds - report.songSeconds > kMissingSeconds)
        warnings.push_back(fmt::format("the file ends early: {:.2f} of {:.2f} seconds are there",
                                       report.songSeconds, report.announcedSeconds));
    if (report.passedThrough && !options.dry)
        warnings.emplace_back(
            "ON/OFF is off, so the sound was passed through (--set ON/OFF=ON switches it on)");
    if (report.oneInBoth && !report.passedThrough)
        warnings.emplace_back("left and right are the same throughout, so everything counts as the middle");
    if (report.clipped > 0) warnings.push_back(ClippingText(report));
    return warnings;
}

/// A run over many songs, and what has become of them so far.
class Run {
  public:
    Run(const RenderPlan& plan, const RenderSettings& settings, const RenderOptions& options,
        Reporter& reporter)
        : plan_(plan), settings_(settings), options_(options), reporter_(reporter) {
        if (!options.log.empty()) log_.emplace(options.log);
    }

    int Do() {
        RunJobs(plan_.songs.size(), static_cast<std::size_t>(options_.jobs), [&](std::size_t index) {
            RunSong(index);
            reporter_.Over(index);
        });
        for (const CopyJob& copy : plan_.copies)
            RunCopy(copy);
        ThrowIfInterrupted();
        for (const std::string& folder : plan_.unread)
            Fail(folder);
        if (options_.recursive) Summarise();
        const std::size_t songs = plan_.songs.size();
        if (failed_ > 0 && songs > 1)
            reporter_.Error(fmt::format("{} of {} songs failed", failed_.load(), songs));
        return failed_ + otherFailures_ == 0 ? kExitFine : kExitFailed;
    }

  private:
    /// Renders one song and tells what came of it.
    void RunSong(std::size_t index) {
        const RenderJob& job = plan_.songs[index];
        SongOutcome outcome;
        try {
            ThrowIfInterrupted();
            outcome = Outcome(index);
        } catch (const Interrupted&) {
            return; // said once, by the whole run
        } catch (const std::exception& error) {
            outcome.message = error.what();
            reporter_.Error(Printable(job.input.string()) + ": " + outcome.message);
            ++failed_;
        }
        if (!log_) return;
        try {
            log_->Add(LogLine(job.input.string(), job.output.string(), outcome));
        } catch (const Failure& error) {
            if (!logFailed_.exchange(true)) Fail(error.what());
        }
    }

    SongOutcome Outcome(std::size_t index) {
        const RenderJob& job = plan_.songs[index];
        std::error_code error;
        if (!job.obstacle.empty()) throw Failure(job.obstacle);
        if (options_.keepExisting && fs::exists(job.output, error)) {
            const std::string message = "exists and is left as it is";
            // Of a library that goes on where it was stopped, they are counted.
            if (!options_.recursive) reporter_.Line(Printable(job.output.string()) + " " + message);
            reporter_.Skip(index);
            ++skipped_;
            return {SongOutcome::Status::skipped, {}, {}, "the output " + message};
        }
        if (options_.recursive)
            fs::create_directories(job.output.parent_path(), error); // opening tells of failures
        const RenderReport report =
            Render(job, settings_, [&](double done) { reporter_.Progress(index, done); });
        const double speed = report.workSeconds > 0.0 ? report.songSeconds / report.workSeconds : 0.0;
        const std::string input = Printable(job.input.string());
        reporter_.Line(fmt::format("{} -> {} ({}, {}, {:.0f} times real time)", input,
                                   Printable(job.output.string()), ClockTime(report.songSeconds),
                                   report.format, speed));
        SongOutcome outcome{SongOutcome::Status::done, report.songSeconds, speed, {}};
        for (const std::string& warning : WarningsOf(report, options_)) {
            reporter_.Warning(input + ": " + warning);
            outcome.message += (outcome.message.empty() ? "" : "; ") + warning;
        }
        ++rendered_;
        seconds_ += report.songSeconds;
        return outcome;
    }

    void RunCopy(const CopyJob& copy) {
        ThrowIfInterrupted();
        std::error_code error;
        if (options_.keepExisting && fs::exists(copy.output, error)) return;
        try {
            CopyFile(copy.input, copy.output);
            ++copied_;
        } catch (const Failure& failure) {
            Fail(failure.what());
        }
    }

    void Summarise() {
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin_;
        std::string text = fmt::format("{} of {} songs rendered in {}", rendered_.load(), plan_.songs.size(),
                                       ClockTime(took.count()));
        if (rendered_ > 0) text += fmt::format(", {:.0f} times real time", seconds_ / took.count());
        if (skipped_ > 0) text += fmt::format("; {} were there already", skipped_.load());
        if (options_.copyOthers) text += fmt::format("; other files copied: {}", copied_);
        reporter_.Line(text);
        if (plan_.leftOut.empty()) return;
        reporter_.Line(
            fmt::format("No songs, left out{}:", options_.copyOthers ? "" : " (--copy-others copies files)"));
        for (const std::string& name : plan_.leftOut)
            reporter_.Line("  " + name);
    }

    void Fail(const std::string& sentence) {
        ++otherFailures_;
        reporter_.Error(sentence);
    }

    const RenderPlan& plan_;
    const RenderSettings& settings_;
    const RenderOptions& options_;
    Reporter& reporter_;
    std::optional<RunLog> log_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::atomic<std::size_t> rendered_{0};
    std::atomic<std::size_t> skipped_{0};
    std::atomic<std::size_t> failed_{0};
    std::atomic<std::size_t> otherFailures_{0};
    std::atomic<bool> logFailed_{false};
    std::atomic<double> seconds_{0.0}; ///< of all songs that were rendered
    std::size_t copied_ = 0;
};

} // namespace

int RunSongs(const RenderPlan& plan, const RenderSettings& settings, const RenderOptions& options,
             Reporter& reporter) {
    return Run(plan, settings, options, reporter).Do();
}

} // namespace vocafade::command
