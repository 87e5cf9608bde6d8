// SPDX-License-Identifier: MIT
// Tries a VST 2.4 plug-in in every way that hosts and faults know, and prints what it tried and what failed.
// See docs/validation.md.
#include "apps/validate/check_process.h"
#include "apps/validate/child.h"
#include "apps/validate/environment.h"
#include "base/path.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

using namespace vocafade;
using namespace vocafade::validate;
namespace fs = std::filesystem;

struct Options {
    int level = 5;
    std::string plugin;
    std::vector<std::string> only;
    std::vector<std::string> skip;
    std::uint32_t seed = 1;
    bool doublePrecision = false;
    bool list = false;
    bool quiet = false;
    bool verbose = false;
#if defined(_WIN32)
    std::uintptr_t notes = 0; ///< of the program that started this one to carry one check out; 0 for none
#endif
};

void AddOptions(CLI::App& app, Options& options) {
    std::vector<std::string> names;
    for (const Check* check : Checks())
        names.emplace_back(check->name);
    app.add_option("PLUGIN", options.plugin,
                   "shared object or bundle folder (default: the Vocafade beside this program)");
    app.add_option("-l,--level", options.level,
                   "how strict, 1 to 10 (default 5); --list shows what each asks for")
        ->check(CLI::Range(1, 10).description(""))
        ->type_name("N");
    const auto addNames = [&](const char* option, std::vector<std::string>& chosen, const char* help) {
        app.add_option(option, chosen, help)
            ->check(CLI::IsMember(names).description(""))
            ->type_name("NAME")
            ->allow_extra_args(false); // what follows the name is the plug-in
    };
    addNames("--only", options.only, "this check, at whatever level; may be repeated");
    addNames("--skip", options.skip, "leave this check out; may be repeated");
    app.add_option("--seed", options.seed, "what everything random starts from (default 1)")->type_name("N");
    app.add_flag("--double", options.doublePrecision,
                 "call the double-precision entry even where it is not announced");
    app.add_flag("--list", options.list, "show the checks and end");
    app.add_flag("-q,--quiet", options.quiet, "show only what failed");
    app.add_flag("-v,--verbose", options.verbose, "show figures too, and what the plug-in wrote");
#if defined(_WIN32)
    app.add_option("--carry-out", options.notes)->group(""); // nobody else's
#endif
}

std::string Printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

/// The last lines of it, each once.
void PrintOutput(const std::string& output) {
    constexpr std::size_t kMostLines = 12;
    std::vector<std::string> lines;
    std::istringstream text(output);
    for (std::string line; std::getline(text, line);) {
        std::erase(lines, line);
        lines.push_back(line);
    }
    const std::size_t first = lines.size() > kMostLines ? lines.size() - kMostLines : 0;
    fmt::print("          it wrote{}:\n", first > 0 ? ", at the end" : "");
    for (std::size_t i = first; i < lines.size(); ++i)
        fmt::print("          | {}\n", Printable(lines[i]));
}

void PrintOutcome(const Check& check, const Outcome& outcome, const Options& options) {
    const bool failed = outcome.has(Kind::fault);
    if (options.quiet && !failed) return;
    const char* verdict = failed ? "FAILED" : outcome.has(Kind::skipped) ? "skipped" : "passed";
    fmt::print("level {:>2}  {:<20} {:<8} {:>6} tried {:>6.1f} s  {}\n", check.level, check.name, verdict,
               outcome.attempts, outcome.seconds, check.summary);
    const auto print = [&](Kind kind, const char* word) {
        for (const Finding& finding : outcome.findings)
            if (finding.kind == kind) fmt::print("          {}{}\n", word, Printable(finding.sentence));
    };
    print(Kind::fault, "fault: ");
    print(Kind::skipped, "skipped: ");
    if (!options.quiet) print(Kind::remark, "remark: ");
    if (options.verbose) print(Kind::figure, "");
    if (!outcome.output.empty() && (options.verbose || failed)) PrintOutput(outcome.output);
}

bool IsWanted(const Check& check, const Options& options) {
    const auto has = [&](const std::vector<std::string>& names) {
        return std::find(names.begin(), names.end(), check.name) != names.end();
    };
    if (has(options.skip)) return false;
    if (!options.only.empty()) return has(options.only);
#if defined(__SANITIZE_THREAD__)
    if ((check.traits & kSeveralThreads) == 0) return false;
#elif defined(VOCAFADE_SANITIZED)
    if ((check.traits & kNotSanitized) != 0) return false;
#endif
    return check.level <= options.level;
}

int Run(const Options& options, const fs::path& plugin) {
    Subject subject(plugin, options.seed, options.doublePrecision);
    if (!options.quiet) fmt::print("{} at level {}\n", Printable(TextOf(plugin)), options.level);
    int checks = 0;
    int failed = 0;
    int skipped = 0;
    std::uint64_t attempts = 0;
    for (const Check* check : Checks()) {
        if (!IsWanted(*check, options)) continue;
        const Outcome outcome = RunCheck(*check, subject);
        PrintOutcome(*check, outcome, options);
        ++checks;
        attempts += outcome.attempts;
        if (outcome.has(Kind::fault)) {
            ++failed;
        } else if (outcome.has(Kind::skipped)) {
            ++skipped;
        }
        if (outcome.unusable) break; // nothing else will do better
    }
    if (failed > 0 || checks == 0) {
        fmt::print("{} of {} checks failed.\n", failed, checks);
        return EXIT_FAILURE;
    }
    if (!options.quiet)
        fmt::print("{} checks passed, {} skipped; {} things tried, seed {}.\n", checks - skipped, skipped,
                   attempts, options.seed);
    return EXIT_SUCCESS;
}

/// The user's settings are neither read nor written: the environment names folders of our own in place of
/// the user's, which go when this does.
class OwnSettings {
  public:
    OwnSettings() { KeepSettingsIn(folder_); }
    ~OwnSettings() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    OwnSettings(const OwnSettings&) = delete;
    OwnSettings& operator=(const OwnSettings&) = delete;

  private:
    fs::path folder_ = MakeOwnFolder();
};

#if defined(_WIN32)
/// What `Child` started this for.
int CarryOut(const Options& options) {
    Subject subject(PathOf(options.plugin), options.seed, options.doublePrecision);
    for (const Check* check : Checks())
        if (IsWanted(*check, options)) return LiveAsChild(*check, subject, options.notes);
    return EXIT_FAILURE;
}
#endif

int ParseAndRun(int argumentCount, char** arguments) {
    Options options;
    CLI::App app(
        "Tries a VST 2.4 plug-in in the ways that hosts use and faults take, each in a process of its own "
        "and with\nsettings folders of its own. Faults fail a check; remarks and figures do not.");
    app.get_formatter()->column_width(30);
    app.allow_windows_style_options(false); // paths begin with a slash
    AddOptions(app, options);
    try {
        std::vector<std::string> words = Arguments(argumentCount, arguments);
        std::reverse(words.begin(), words.end()); // as it takes them
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : 2;
    }
    if (options.list) {
        for (const Check* check : Checks())
            fmt::print("level {:>2}  {:<20} {}\n", check->level, check->name, check->summary);
        return EXIT_SUCCESS;
    }
#if defined(_WIN32)
    if (options.notes != 0) return CarryOut(options);
#endif
    const OwnSettings settings;
    fs::path plugin = PathOf(options.plugin);
    if (plugin.empty()) plugin = ProgramFolder() / "Vocafade.vst";
    return Run(options, fs::absolute(plugin));
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return ParseAndRun(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vocafade-validate: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
