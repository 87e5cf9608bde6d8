// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/copy_file.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/text.h"
#include "base/file_replacement.h"

#include <fmt/format.h>
#include <system_error>
#include <vector>

namespace vocafade::command {

namespace fs = std::filesystem;

void CopyFile(const fs::path& from, const fs::path& to) {
    constexpr std::size_t kBlock = 65536;
    const auto refuse = [](const fs::path& path, const char* what) {
        throw Failure(fmt::format("{}: cannot be {}: {}", Printable(path.string()), what, SystemReason()));
    };
    CFile source;
    FileReplacement target;
    std::error_code error;
    if (!source.Open(from.c_str(), CFile::modeRead)) refuse(from, "read");
    fs::create_directories(to.parent_path(), error);
    if (!target.Begin(to.string())) refuse(to, "written");
    std::vector<char> block(kBlock);
    for (;;) {
        ThrowIfInterrupted();
        errno = 0;
        const std::size_t count = source.Read(block.data(), block.size());
        if (count == 0) break;
        if (!target.file().Write(block.data(), count)) refuse(to, "written");
    }
    if (errno != 0) refuse(from, "read");
    if (!target.Commit()) refuse(to, "written");
    const auto time = fs::last_write_time(from, error);
    if (!error) fs::last_write_time(to, time, error); // a copy without its time is still one
}

} // namespace vocafade::command
