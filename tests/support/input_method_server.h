// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/processes.h"

#include <atomic>

namespace vocafade::test {

/// A desktop's input method in a process of its own, on the display that DISPLAY names, until the end of the
/// scope; XMODIFIERS names it for as long. It composes the small letters that are typed, shows them nowhere,
/// commits what they mean at Return and forgets them at Escape. All other keys it gives back.
class InputMethodServer {
  public:
    enum class Manner : int {
        answers,
        fallsSilent, ///< once a client can type
        isSilent,    ///< has a name, and says nothing to anybody
    };
    explicit InputMethodServer(Manner manner = Manner::answers);
    ~InputMethodServer();
    InputMethodServer(const InputMethodServer&) = delete;
    InputMethodServer& operator=(const InputMethodServer&) = delete;

    /// Ends it at once, as a crash of it would.
    void Kill() { process_.Kill(); }
    /// Presses that it has answered, and sent the answers.
    int presses() const;
    /// Where the client's caret is, in its window.
    int caretX() const;
    int caretY() const;

  private:
    Aside::Process process_;
};

} // namespace vocafade::test
