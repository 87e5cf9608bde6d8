// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/check.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vocafade::validate {

/// The process that carries a check out. Everything is [main-thread].
class Child {
  public:
    /// Starts it. Throws `std::system_error` when the system gives no process.
    Child(const Check& check, Subject& subject);
    /// It is over by then, with all that it started.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    const Notes& notes() const;
    /// Whether it is over. Takes what it writes meanwhile, and waits for some milliseconds at most.
    bool HasEnded();
    void Kill();

    // Once it is over:

    /// "crashed (signal 11)", or empty when it ended by itself.
    std::string Crash() const;
    /// What it ended with by itself.
    int Status() const;
    /// The end of what it wrote.
    std::string Output() const;

  private:
    struct Process;
    std::unique_ptr<Process> process_;
};

/// The end of a text that may be long.
class Tail {
  public:
    void Add(const char* bytes, std::size_t count) {
        text_.append(bytes, count);
        if (text_.size() > 4 * kMost) text_.erase(0, text_.size() - kMost);
    }
    std::string text() const { return text_.size() > kMost ? text_.substr(text_.size() - kMost) : text_; }

  private:
    static constexpr std::size_t kMost = 6000; // bytes
    std::string text_;
};

#if defined(_WIN32)
/// What the program does that `Child` started, with the number of the notes that it was given: carries the check out,
/// as a process that may crash. Answers what the process is to end with.
int LiveAsChild(const Check& check, Subject& subject, std::uintptr_t notes);
#endif

/// A damaged state must not take the machine down.
inline constexpr std::uint64_t kMostMemory = std::uint64_t{8} << 30; // bytes

} // namespace vocafade::validate
