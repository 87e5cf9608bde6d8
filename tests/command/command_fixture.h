// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/aiff.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sndfile.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vocafade::command {

inline constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
using Words = std::vector<std::string>;

/// How a run of the command is hemmed in.
struct RunLimits {
    std::int64_t fileBytes = -1;   ///< the largest file that it may write
    bool obeysPermissions = false; ///< even when the tests run as root
    bool onTerminal = false;       ///< its standard error is a terminal
};

/// What a run left.
struct RunResult {
    int exitCode = -1; ///< -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
    std::int64_t memoryBytes = 0; ///< the most that it had in memory
};

/// Interleaved stereo sound.
struct Song {
    std::vector<float> samples;
    int format = 0;
    int rate = 0;
    std::string texts; ///< title and the like, in lines
    std::int64_t frames() const { return static_cast<std::int64_t>(samples.size() / 2); }
};

/// Runs the command as a process, in a folder of its own with a home and preferences of its own.
class CommandTest : public ::testing::Test {
  protected:
    CommandTest();

    RunResult Run(const Words& arguments, const RunLimits& limits = {});
    pid_t Start(const Words& arguments, const RunLimits& limits = {}, int terminal = -1);
    RunResult Finish(pid_t process);
    /// Runs the command, which is to end with `exitCode` and a message with `reason` in it.
    RunResult Fails(const Words& arguments, int exitCode, const std::string& reason,
                    const RunLimits& limits = {});
    /// Runs the command, which is to end with 0 and to print all `parts`.
    RunResult Succeeds(const Words& arguments, const Words& parts = {});

    std::filesystem::path At(const std::string& name) const { return folder_ / name; }
    bool Exists(const std::string& name) const { return std::filesystem::exists(At(name)); }
    static std::string Content(const std::filesystem::path& path) { return test::ReadFile(path); }
    /// The names in the folder, hidden ones too.
    std::set<std::string> Names(const std::string& subfolder = "") const {
        return test::NamesIn(folder_ / subfolder);
    }
    void Text(const std::string& name, const std::string& text) const { test::WriteFile(At(name), text); }

    /// Writes a song and answers its name.
    std::string Write(const std::string& name, int format, const std::vector<float>& samples,
                      int rate = 44100, int channels = 2);
    Song Read(const std::string& name) const;
    /// An 8-bit WAV of `seconds`, all of one value, that takes no room on the disk.
    std::string WriteLongSong(const std::string& name, int seconds);

  private:
    test::TempFolder root_;

  protected:
    std::filesystem::path folder_ = root_ / "songs";       ///< where the command runs
    std::filesystem::path preferences_ = root_ / "config"; ///< XDG_CONFIG_HOME
};

/// `frames` of stereo noise, reproducible, left and right independent.
inline std::vector<float> Noise(std::size_t frames, float level = 0.2f) {
    return test::Noise(2 * frames, 7, level);
}

void ExpectParts(const std::string& text, const Words& parts);

/// What a PNG file of that size begins with.
inline std::string PngStart(std::uint32_t width, std::uint32_t height) {
    return std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) + test::Big32(width) + test::Big32(height);
}

} // namespace vocafade::command
