// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/library.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <system_error>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

class Walk {
  public:
    Walk(Library& library, const fs::path& output) : library_(library), output_(IdentityOf(output)) {}

    bool IsOutput(const fs::path& folder) const { return output_ && IdentityOf(folder) == output_; }

    void Into(const fs::path& folder, const fs::path& place) {
        if (IsOutput(folder)) return;
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        // Not a range: its increment throws when the disk fails on the way.
        for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
             entry.increment(error))
            entries.push_back(*entry);
        if (error) library_.unread.push_back(Printable(folder.string()) + ": " + error.message());
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry& entry : entries) {
            const fs::path inside = place / entry.path().filename();
            if (entry.symlink_status(error).type() == fs::file_type::directory)
                Into(entry.path(), inside);
            else
                Take(entry.path(), inside);
        }
    }

    void Take(const fs::path& path, const fs::path& place) {
        std::error_code error;
        if (!fs::is_regular_file(path, error))
            library_.leftOut.push_back(path);
        else if (!path.filename().string().starts_with('.') && IsSoundEnding(EndingOf(path)))
            library_.songs.push_back({path, place});
        else
            library_.others.push_back({path, place});
    }

  private:
    Library& library_;
    std::optional<std::pair<dev_t, ino_t>> output_;
};

} // namespace

Library WalkLibrary(std::span<const std::string> roots, const fs::path& output) {
    Library library;
    Walk walk(library, output);
    for (const fs::path root : roots) {
        std::error_code error;
        const fs::file_status status = fs::status(root, error);
        if (walk.IsOutput(root))
            throw UsageError(fmt::format("'{}' is both read and written; choose another folder with -o",
                                         Printable(root.string())));
        if (!fs::exists(status))
            library.unread.push_back(Printable(root.string()) + ": there is no such folder");
        else if (fs::is_directory(status))
            walk.Into(root, {});
        else
            walk.Take(root, root.filename());
    }
    return library;
}

} // namespace vocafade::command
