// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/target_check.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"
#include "base/file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>

namespace vocafade::command {

namespace fs = std::filesystem;

fs::path Canonical(const fs::path& path) {
    const fs::path plain = PathFromUrlOrPath(path.c_str()); // as all writing takes it
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(fs::absolute(plain, error), error);
    return error ? plain.lexically_normal() : canonical;
}

std::optional<std::pair<dev_t, ino_t>> IdentityOf(const fs::path& path) {
    struct stat status {};
    if (::stat(PathFromUrlOrPath(path.c_str()).c_str(), &status) != 0) return std::nullopt;
    return std::pair(status.st_dev, status.st_ino);
}

void CheckTarget(const fs::path& target, std::initializer_list<fs::path> inputs) {
    if (target == "-")
        throw UsageError(
            "the output cannot be the standard output: it is written to a new file that then takes "
            "its name; a file of the name '-' is given as ./-");
    const auto identity = IdentityOf(target);
    for (const fs::path& input : inputs) {
        if (input.empty()) continue;
        if (Canonical(target) == Canonical(input) || (identity && identity == IdentityOf(input)))
            throw UsageError(fmt::format("'{}' would be written over an input; choose another name",
                                         Printable(target.string())));
    }
}

void CheckPictureTarget(const fs::path& target, const fs::path& input) {
    CheckTarget(target, {input});
    if (LowerCase(target.extension().string()) != ".png")
        throw UsageError(fmt::format("'{}': pictures are written as PNG; give a name that ends in .png",
                                     Printable(target.string())));
}

} // namespace vocafade::command
