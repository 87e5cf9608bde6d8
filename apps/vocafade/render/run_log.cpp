// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/run_log.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"
#include "base/utf8.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace vocafade::command {
namespace {

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : ValidUtf8(text)) {
        if (letter == '"' || letter == '\\')
            quoted += std::string("\\") + letter;
        else if (static_cast<unsigned char>(letter) < 0x20)
            quoted += fmt::format("\\u{:04x}", static_cast<unsigned>(letter));
        else
            quoted += letter;
    }
    return quoted + "\"";
}

std::string Number(const std::optional<double>& number, int digits) {
    return number ? fmt::format("{:.{}f}", *number, digits) : "null";
}

} // namespace

std::string LogLine(std::string_view input, std::string_view output, const SongOutcome& outcome) {
    constexpr std::string_view kStatus[] = {"done", "skipped", "failed"};
    return fmt::format("{{\"input\":{},\"output\":{},\"status\":\"{}\",\"seconds\":{},\"times_real_time\":{},"
                       "\"message\":{}}}\n",
                       Quoted(input), Quoted(output), kStatus[static_cast<int>(outcome.status)],
                       Number(outcome.seconds, 3), Number(outcome.speed, 1), Quoted(outcome.message));
}

RunLog::RunLog(const std::filesystem::path& path)
    : path_(path), descriptor_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0)
        throw Failure(fmt::format("cannot write '{}': {}", Printable(path.string()), SystemReason()));
}

RunLog::~RunLog() { ::close(descriptor_); }

void RunLog::Add(const std::string& line) {
    const ssize_t taken = ::write(descriptor_, line.data(), line.size());
    if (taken == static_cast<ssize_t>(line.size())) return;
    throw Failure(fmt::format("cannot write '{}': {}", Printable(path_.string()),
                              SystemReason(taken < 0 ? errno : ENOSPC)));
}

} // namespace vocafade::command
