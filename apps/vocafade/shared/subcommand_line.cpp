// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/subcommand_line.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/text.h"
#include "base/file_replacement.h"

#include <fmt/format.h>

namespace vocafade::command {
bool ParseSubcommand(CLI::App& app, int argumentCount, char** arguments) {
    app.set_help_flag("-h,--help", "show this help and end");
    app.get_formatter()->column_width(30);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        PrintText(app.help());
        return true;
    } catch (const CLI::ParseError& error) {
        throw UsageError(Printable(error.what()));
    }
    return false;
}

std::string ReadWholeFile(const std::string& path, std::size_t most) {
    CFile file;
    if (!file.Open(path.c_str(), CFile::modeRead))
        throw Failure(fmt::format("{} cannot be read: {}", Printable(path), SystemReason()));
    std::string bytes;
    char block[65536];
    while (const std::size_t count = file.Read(block, sizeof block)) {
        bytes.append(block, count);
        if (bytes.size() > most)
            throw Failure(fmt::format("{} is too large: at most {} fit", Printable(path),
                                      ByteCount(static_cast<double>(most))));
    }
    return bytes;
}

void WriteWhole(const std::string& path, std::string_view bytes) {
    if (path.empty()) {
        PrintText(bytes);
        return;
    }
    FileReplacement replacement;
    if (!replacement.Begin(path) || !replacement.file().Write(bytes.data(), bytes.size()) ||
        !replacement.Commit())
        throw Failure(fmt::format("{} cannot be written: {}", Printable(path), SystemReason()));
}

} // namespace vocafade::command
