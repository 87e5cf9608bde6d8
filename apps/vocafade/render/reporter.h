// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace vocafade::command {

/// The line that stands on a terminal while songs are rendered, at most `width` columns: a bar, how much is
/// done, the time left once it can be told, and how many of several songs are finished.
std::string ProgressLine(double done, double secondsSoFar, std::size_t songsDone, std::size_t songs,
                         std::size_t width);

/// Says how a run is going: a progress bar on a terminal, a line for each song on the standard output, warnings and
/// errors on the standard error. Every function may be called on any thread.
class Reporter {
  public:
    /// `weights`: how much work each song is, in any unit (its bytes, say).
    Reporter(bool quiet, std::vector<double> weights);
    /// Takes the bar off the terminal.
    ~Reporter();
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    /// Song `index` is done by this part, 0 to 1.
    void Progress(std::size_t index, double done);
    /// Song `index` turned out to be no work at all.
    void Skip(std::size_t index);
    /// Song `index` is over, one way or the other.
    void Over(std::size_t index);
    void Line(const std::string& text);    ///< silent when quiet
    void Warning(const std::string& text); ///< silent when quiet
    void Error(const std::string& text);

  private:
    void Draw();
    void Erase();

    std::mutex mutex_;
    bool quiet_;
    bool bar_;
    bool drawn_ = false;
    std::vector<double> weights_;
    std::vector<double> done_;
    std::size_t over_ = 0;
    std::chrono::steady_clock::time_point begin_;
    std::chrono::steady_clock::time_point lastDraw_;
};

} // namespace vocafade::command
