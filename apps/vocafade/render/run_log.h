// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vocafade::command {

/// What became of one song.
struct SongOutcome {
    enum class Status { done, skipped, failed };
    Status status = Status::failed;
    std::optional<double> seconds; ///< the song's length
    std::optional<double> speed;   ///< times real time
    std::string message;           ///< the reason, or warnings
};

/// The line that stands for a song in the log, a JSON object and a line's end. Bytes of names that are no UTF-8
/// become replacement signs.
std::string LogLine(std::string_view input, std::string_view output, const SongOutcome& outcome);

/// A file that gets a line for each song, behind what it has. Each line is written at once and as one, so that several
/// processes can share a file and a run that is stopped has all its lines there.
class RunLog {
  public:
    /// Opens `path`, or makes it. Throws `Failure`.
    explicit RunLog(const std::filesystem::path& path);
    ~RunLog();
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    /// [any-thread] Throws `Failure` when the line cannot be written.
    void Add(const std::string& line);

  private:
    std::filesystem::path path_;
    int descriptor_;
};

} // namespace vocafade::command
