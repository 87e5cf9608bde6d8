// SPDX-License-Identifier: MIT
#include "apps/validate/validate_command.h"

#include "apps/validate/runner_process.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/text.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <optional>
#include <sstream>

namespace vocafade::command {
namespace {

using validate::CheckEntry;
using validate::Outcome;
using validate::RunnerProcess;

constexpr int kHighestLevel = 10;
constexpr int kUsualLevel = 5;

constexpr const char* kDescription =
    "Tries a VST 2.4 plug-in in the ways that hosts use and faults take, each in a process of its own.\n"
    "\n"
    "Levels of strictness, each with all below it:\n"
    "   1  it loads, tells its names and makes sound\n"
    "   2  parameters and programs\n"
    "   3  states are saved and restored\n"
    "   4  sample rates from 8 to 384 kHz, blocks from 0 to 65536 samples\n"
    "   5  it lives and dies as hosts do it, many at once\n"
    "   6  buffers in place, misaligned and fenced in; samples that are no numbers\n"
    "   7  many threads, calls and the editor while audio runs\n"
    "   8  the audio thread neither allocates nor waits, and is in time\n"
    "   9  every request with odd arguments, odd orders, damaged states\n"
    "  10  loaded a hundred times, forked, watched; thousands of calls at random\n";

constexpr const char* kClosing =
    "\nFaults fail a check; remarks and figures do not. The plug-in is used with settings folders of its "
    "own,\n"
    "never with the user's. Exit status: 0 nothing failed, 1 something failed, 2 the command line makes no\n"
    "sense.\n";

struct Options {
    int level = kUsualLevel;
    std::string plugin;
    std::vector<std::string> only;
    std::vector<std::string> skip;
    std::uint32_t seed = 1;
    bool twofold = false;
    bool list = false;
    bool quiet = false;
    bool verbose = false;
};

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("PLUGIN", options.plugin,
                   "a shared object or a bundle folder (default: the Vocafade that the command itself uses)");
    app.add_option("-l,--level", options.level,
                   fmt::format("how strict, 1 to {} (default {})", kHighestLevel, kUsualLevel))
        ->type_name("N");
    app.add_option("--only", options.only, "this check alone, at whatever level; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false) // what follows the name is the plug-in
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--skip", options.skip, "leave this check out; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false) // what follows the name is the plug-in
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--seed", options.seed, "what everything random starts from (default 1)")->type_name("N");
    app.add_flag("--double", options.twofold,
                 "call the double-precision entry even where it is not promised");
    app.add_flag("--list", options.list, "show the checks and end");
    app.add_flag("-q,--quiet", options.quiet, "show only what failed");
    app.add_flag("-v,--verbose", options.verbose, "show figures too, and what the plug-in wrote");
    app.set_help_flag("-h,--help", "show this help and end");
    app.footer(kClosing);
}

/// Answers a text to print instead of validating.
std::optional<std::string> Parse(int argumentCount, char** arguments, Options& options) {
    CLI::App app(kDescription, "vocafade validate");
    app.get_formatter()->column_width(30);
    AddOptions(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        return app.help();
    } catch (const CLI::ParseError& error) {
        throw UsageError(Printable(error.what()));
    }
    if (options.level < 1 || options.level > kHighestLevel)
        throw UsageError(
            fmt::format("--level {} is out of range: it goes from 1 to {}", options.level, kHighestLevel));
    return std::nullopt;
}

void CheckNames(const std::vector<std::string>& names, const std::vector<CheckEntry>& checks) {
    std::vector<std::string> known;
    known.reserve(checks.size());
    for (const CheckEntry& check : checks)
        known.push_back(check.name);
    for (const std::string& name : names)
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw UsageError(
                fmt::format("there is no check '{}'.{}", Printable(name), DidYouMean(name, known)));
}

std::string Listing(const std::vector<CheckEntry>& checks) {
    std::string text = fmt::format("{:<6} {:<20} {}\n", "LEVEL", "CHECK", "WHAT IT ASKS FOR");
    for (const CheckEntry& check : checks)
        text += fmt::format("{:>5}  {:<20} {}\n", check.level, check.name, check.summary);
    return text;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Prints what comes of the checks, and counts.
class Results {
  public:
    explicit Results(const Options& options) : options_(options) {}

    void Add(const CheckEntry& check, const Outcome& outcome) {
        const bool failed = !outcome.faults.empty();
        ++checks_;
        attempts_ += outcome.attempts;
        if (failed) ++failed_;
        if (!outcome.skips.empty() && !failed) ++skipped_;
        if (options_.quiet && !failed) return;
        const char* verdict = failed ? "FAILED" : outcome.skips.empty() ? "passed" : "skipped";
        fmt::print("level {:>2}  {:<20} {:<8} {:>6} tried {:>6.1f} s  {}\n", check.level, check.name, verdict,
                   outcome.attempts, outcome.seconds, check.summary);
        PrintAll("fault: ", outcome.faults);
        PrintAll("skipped: ", outcome.skips);
        if (!options_.quiet) PrintAll("remark: ", outcome.remarks);
        if (options_.verbose) PrintAll("", outcome.measures);
        if (!outcome.output.empty() && (options_.verbose || failed)) PrintOutput(outcome.output);
        std::fflush(stdout);
    }

    int Finish() const {
        if (failed_ > 0) {
            fmt::print("{} of {} checks failed.\n", failed_, checks_);
            return kExitFailed;
        }
        if (!options_.quiet)
            fmt::print("{} checks passed, {} skipped; {} things tried, seed {}.\n", checks_ - skipped_,
                       skipped_, attempts_, options_.seed);
        return kExitFine;
    }

  private:
    static void PrintAll(const char* kind, const std::vector<std::string>& sentences) {
        for (const std::string& sentence : sentences)
            fmt::print("          {}{}\n", kind, sentence);
    }
    /// The last lines of it, each once.
    static void PrintOutput(const std::string& output) {
        constexpr std::size_t kMostLines = 12;
        std::vector<std::string> lines;
        std::istringstream text(output);
        for (std::string line; std::getline(text, line);) {
            lines.erase(std::remove(lines.begin(), lines.end(), line), lines.end());
            lines.push_back(line);
        }
        const std::size_t first = lines.size() > kMostLines ? lines.size() - kMostLines : 0;
        fmt::print("          it wrote{}:\n", first > 0 ? ", at the end" : "");
        for (std::size_t i = first; i < lines.size(); ++i)
            fmt::print("          | {}\n", Printable(lines[i]));
    }

    const Options& options_;
    int checks_ = 0;
    int failed_ = 0;
    int skipped_ = 0;
    std::uint64_t attempts_ = 0;
};

} // namespace

int RunValidate(int argumentCount, char** arguments) {
    Options options;
    if (const std::optional<std::string> answer = Parse(argumentCount, arguments, options)) {
        fmt::print("{}", *answer);
        return kExitFine;
    }
    const RunnerProcess runner;
    const std::vector<CheckEntry> checks = runner.List();
    CheckNames(options.only, checks);
    CheckNames(options.skip, checks);
    if (options.list) {
        fmt::print("{}", Listing(checks));
        return kExitFine;
    }
    const std::filesystem::path plugin = std::filesystem::absolute(FindPlugin(options.plugin));
    if (!std::filesystem::exists(plugin))
        throw Failure(fmt::format("there is no plug-in '{}'", Printable(plugin.string())));
    if (!options.quiet) fmt::print("{} at level {}\n", Printable(plugin.string()), options.level);
    Results results(options);
    for (const CheckEntry& check : checks) {
        const bool wanted =
            options.only.empty() ? check.level <= options.level : Contains(options.only, check.name);
        if (!wanted || Contains(options.skip, check.name)) continue;
        const Outcome outcome = runner.Run(check, plugin, options.seed, options.twofold);
        results.Add(check, outcome);
        if (outcome.unusable) break; // nothing else will do better
    }
    return results.Finish();
}

} // namespace vocafade::command
