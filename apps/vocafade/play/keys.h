// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <termios.h>

namespace vocafade::command {

/// What a key asks for.
enum class Key { pause, back, forward, farBack, farForward, next, previous, voice, quit };

/// The keys of the terminal from which the command was started, one by one and without an echo. Everything is
/// [main-thread].
class Keys {
  public:
    /// Takes the standard input over, when it is a terminal.
    Keys();
    /// Leaves the terminal as it was.
    ~Keys();
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;

    /// False without a terminal: no key will come.
    bool isOpen() const { return open_; }
    /// Waits for up to `milliseconds` for a key; others than those above are dropped.
    std::optional<Key> Take(int milliseconds);

  private:
    void Listen();
    void Read();
    std::optional<Key> Decode();

    bool open_ = false;
    bool changed_ = false; ///< the terminal is not as it was
    termios before_{};
    std::string typed_; ///< not looked at yet
};

} // namespace vocafade::command
