// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/render_plan.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"

#include <fmt/format.h>
#include <map>
#include <set>
#include <system_error>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

/// The output folder, when `--out` means one.
bool MeansFolder(const RenderOptions& options) {
    if (options.output.empty()) return false;
    std::error_code error;
    if (options.output.ends_with('/') || fs::is_directory(options.output, error)) return true;
    if (options.inputs.size() < 2) return false;
    if (fs::exists(options.output, error) || IsKnownEnding(EndingOf(options.output)))
        throw UsageError(
            fmt::format("several inputs go into a folder, and '{}' is no folder", Printable(options.output)));
    return true;
}

fs::path OutputFor(const fs::path& input, const RenderOptions& options, bool intoFolder) {
    if (!options.output.empty() && !intoFolder) return options.output;
    const std::string ending = options.format.empty() ? input.extension().string() : "." + options.format;
    if (intoFolder) return fs::path(options.output) / (input.stem().string() + ending);
    return input.parent_path() / (input.stem().string() + "-vocafade" + ending);
}

void CheckCollisions(const std::vector<RenderJob>& jobs, const RenderOptions& options) {
    std::map<fs::path, const RenderJob*> taken;
    std::set<fs::path> inputs;
    std::set<std::pair<dev_t, ino_t>> inputFiles;
    const auto protect = [&](const fs::path& input) {
        inputs.insert(Canonical(input));
        if (const auto identity = IdentityOf(input)) inputFiles.insert(*identity);
    };
    for (const RenderJob& job : jobs)
        protect(job.input);
    for (const std::string& other : {options.bank, options.plugin})
        if (!other.empty()) protect(other);
    for (const RenderJob& job : jobs) {
        const fs::path place = Canonical(job.output);
        const auto identity = IdentityOf(job.output);
        if (inputs.contains(place) || (identity && inputFiles.contains(*identity)))
            throw UsageError(
                fmt::format("'{}' would be written over an input; choose another name or folder with -o",
                            Printable(job.output.string())));
        const auto [other, isNew] = taken.emplace(place, &job);
        if (!isNew)
            throw UsageError(
                fmt::format("'{}' and '{}' would both be written to '{}'; render them one by one",
                            Printable(other->second->input.string()), Printable(job.input.string()),
                            Printable(job.output.string())));
    }
}

} // namespace

std::vector<RenderJob> PlanJobs(const RenderOptions& options) {
    if (!options.format.empty() && !IsKnownEnding(options.format))
        throw UsageError(
            fmt::format("--format {} is not known; known are {}", Printable(options.format), KnownEndings()));
    CheckTarget(options.output, {});
    const bool intoFolder = MeansFolder(options);
    if (!options.output.empty() && !intoFolder) {
        const std::string ending = EndingOf(options.output);
        if (options.format.empty() && !ending.empty() && !IsKnownEnding(ending) &&
            ending != EndingOf(options.inputs.front()))
            throw UsageError(fmt::format("no format is known for the ending of '{}'; known are {}",
                                         Printable(options.output), KnownEndings()));
    }
    std::vector<RenderJob> jobs;
    for (const std::string& input : options.inputs)
        jobs.push_back({input, OutputFor(input, options, intoFolder)});
    CheckCollisions(jobs, options);
    if (!intoFolder) return jobs;
    std::error_code error;
    fs::create_directories(options.output, error);
    if (!fs::is_directory(options.output))
        throw Failure(
            fmt::format("cannot make the folder '{}': {}", Printable(options.output), error.message()));
    return jobs;
}

} // namespace vocafade::command
