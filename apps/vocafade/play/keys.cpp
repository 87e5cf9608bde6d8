// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/keys.h"

#include <cerrno>
#include <chrono>
#include <poll.h>
#include <string_view>
#include <thread>
#include <unistd.h>

namespace vocafade::command {
namespace {

constexpr char kEscape = '\033';

/// What terminals send; the ones with a modifier as xterm does.
constexpr struct {
    std::string_view sent;
    Key key;
} kSequences[] = {
    {"\033[D", Key::back},    {"\033OD", Key::back},       {"\033[C", Key::forward},
    {"\033OC", Key::forward}, {"\033[1;2D", Key::farBack}, {"\033[1;2C", Key::farForward},
    {"\033[d", Key::farBack}, {"\033[c", Key::farForward}, // rxvt
};

std::optional<Key> KeyOf(char letter) {
    switch (letter) {
    case ' ':
        return Key::pause;
    case 'n':
    case 'N':
        return Key::next;
    case 'p':
    case 'P':
        return Key::previous;
    case 'v':
    case 'V':
        return Key::voice;
    case 'q':
    case 'Q':
        return Key::quit;
    default:
        return std::nullopt;
    }
}

} // namespace

Keys::Keys() {
    open_ = ::isatty(STDIN_FILENO) == 1 && ::tcgetattr(STDIN_FILENO, &before_) == 0;
    Listen();
}

Keys::~Keys() {
    if (changed_ && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp()) ::tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
}

/// Asks for single keys. Again and again, since a shell takes the terminal back while the command is stopped; in the
/// background nothing is touched, as that would stop it.
void Keys::Listen() {
    termios now{};
    if (!open_ || ::tcgetpgrp(STDIN_FILENO) != ::getpgrp() || ::tcgetattr(STDIN_FILENO, &now) != 0) return;
    if ((now.c_lflag & (ICANON | ECHO)) == 0) return;
    now.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    now.c_cc[VMIN] = 0;
    now.c_cc[VTIME] = 0;
    changed_ = ::tcsetattr(STDIN_FILENO, TCSADRAIN, &now) == 0 || changed_;
}

std::optional<Key> Keys::Take(int milliseconds) {
    Listen();
    if (typed_.empty() && open_ && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (::poll(&input, 1, milliseconds) == 1) Read();
    } else if (typed_.empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
    while (!typed_.empty())
        if (const std::optional<Key> key = Decode()) return key;
    return std::nullopt;
}

void Keys::Read() {
    char bytes[64];
    const ssize_t got = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (got > 0)
        typed_.append(bytes, static_cast<std::size_t>(got));
    else
        open_ = got < 0 && errno == EINTR; // the terminal has gone
}

/// Takes one key off what was typed.
std::optional<Key> Keys::Decode() {
    for (const auto& [sent, key] : kSequences)
        if (typed_.starts_with(sent)) {
            typed_.erase(0, sent.size());
            return key;
        }
    const char first = typed_.front();
    if (first != kEscape) {
        typed_.erase(0, 1);
        return KeyOf(first);
    }
    // Some other key's sequence: up to its closing letter.
    std::size_t end = typed_.size() > 1 && (typed_[1] == '[' || typed_[1] == 'O') ? 2 : 1;
    while (end > 1 && end < typed_.size() && (typed_[end] < '@' || typed_[end] > '~'))
        ++end;
    typed_.erase(0, end + 1);
    return std::nullopt;
}

} // namespace vocafade::command
