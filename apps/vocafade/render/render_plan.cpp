// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/render_plan.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/library.h"
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

/// A place below a folder, with the ending that was asked for.
fs::path Renamed(const fs::path& place, const RenderOptions& options) {
    if (options.format.empty()) return place;
    return place.parent_path() / (place.stem().string() + "." + options.format);
}

fs::path OutputFor(const fs::path& input, const RenderOptions& options, bool intoFolder) {
    if (!options.output.empty() && !intoFolder) return options.output;
    if (intoFolder) return fs::path(options.output) / Renamed(input.filename(), options);
    const std::string ending = options.format.empty() ? input.extension().string() : "." + options.format;
    return input.parent_path() / (input.stem().string() + "-vocafade" + ending);
}

/// Who else reads or writes the files of a run.
class Claims {
  public:
    /// `path` must stay as it is.
    void Protect(const fs::path& path) {
        inputs_.insert(Canonical(path));
        if (const auto identity = IdentityOf(path)) inputFiles_.insert(*identity);
    }
    /// Claims an output. Why that cannot be, or nothing.
    std::string Claim(const fs::path& input, const fs::path& output) {
        const fs::path place = Canonical(output);
        const auto identity = IdentityOf(output);
        if (inputs_.contains(place) || (identity && inputFiles_.contains(*identity)))
            return fmt::format("'{}' would be written over an input; choose another name or folder with -o",
                               Printable(output.string()));
        const auto [other, isNew] = taken_.emplace(place, input);
        if (isNew) return {};
        return fmt::format("'{}' and '{}' would both be written to '{}'; render them one by one",
                           Printable(other->second.string()), Printable(input.string()),
                           Printable(output.string()));
    }

  private:
    std::map<fs::path, fs::path> taken_; ///< outputs and their inputs
    std::set<fs::path> inputs_;
    std::set<std::pair<dev_t, ino_t>> inputFiles_;
};

Claims ClaimsOf(const RenderOptions& options, const RenderPlan& plan) {
    Claims claims;
    for (const RenderJob& song : plan.songs)
        claims.Protect(song.input);
    for (const CopyJob& copy : plan.copies)
        claims.Protect(copy.input);
    for (const std::string& other : {options.bank, options.plugin})
        if (!other.empty()) claims.Protect(other);
    if (!options.log.empty())
        if (const std::string obstacle = claims.Claim("--log", options.log); !obstacle.empty())
            throw UsageError(obstacle);
    return claims;
}

void MakeOutputFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder))
        throw Failure(fmt::format("cannot make the folder '{}': {}", Printable(folder), error.message()));
}

RenderPlan PlanLibrary(const RenderOptions& options) {
    if (options.output.empty()) throw UsageError("--recursive needs a folder to write to: -o FOLDER");
    const fs::path output = options.output;
    Library library = WalkLibrary(options.inputs, output);
    RenderPlan plan;
    plan.unread = std::move(library.unread);
    for (const Library::File& song : library.songs)
        plan.songs.push_back({song.path, output / Renamed(song.place, options), {}});
    for (const Library::File& other : library.others) {
        if (options.copyOthers)
            plan.copies.push_back({other.path, output / other.place});
        else
            plan.leftOut.push_back(Printable(other.path.string()));
    }
    std::error_code error;
    for (const fs::path& other : library.leftOut)
        plan.leftOut.push_back(Printable(other.string()) +
                               (fs::is_directory(other, error) ? " (a link to a folder)" : " (no file)"));
    Claims claims = ClaimsOf(options, plan);
    for (RenderJob& song : plan.songs)
        song.obstacle = claims.Claim(song.input, song.output);
    std::erase_if(plan.copies, [&](const CopyJob& copy) {
        const std::string obstacle = claims.Claim(copy.input, copy.output);
        if (!obstacle.empty()) plan.unread.push_back(obstacle);
        return !obstacle.empty();
    });
    if (plan.songs.empty() && plan.copies.empty() && plan.unread.empty())
        throw Failure(fmt::format("there is no sound file in '{}'", Printable(options.inputs.front())));
    MakeOutputFolder(options.output);
    return plan;
}

} // namespace

RenderPlan PlanRun(const RenderOptions& options) {
    if (!options.format.empty() && !IsKnownEnding(options.format))
        throw UsageError(
            fmt::format("--format {} is not known; known are {}", Printable(options.format), KnownEndings()));
    CheckTarget(options.output, {});
    if (options.recursive) return PlanLibrary(options);
    const bool intoFolder = MeansFolder(options);
    if (!options.output.empty() && !intoFolder) {
        const std::string ending = EndingOf(options.output);
        if (options.format.empty() && !ending.empty() && !IsKnownEnding(ending) &&
            ending != EndingOf(options.inputs.front()))
            throw UsageError(fmt::format("no format is known for the ending of '{}'; known are {}",
                                         Printable(options.output), KnownEndings()));
    }
    RenderPlan plan;
    for (const std::string& input : options.inputs)
        plan.songs.push_back({input, OutputFor(input, options, intoFolder), {}});
    Claims claims = ClaimsOf(options, plan);
    for (const RenderJob& song : plan.songs)
        if (const std::string obstacle = claims.Claim(song.input, song.output); !obstacle.empty())
            throw UsageError(obstacle);
    if (intoFolder) MakeOutputFolder(options.output);
    return plan;
}

} // namespace vocafade::command
