// SPDX-License-Identifier: MIT
#pragma once

#include "ui/winuser.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vocafade {

class CWnd;

/// Messages and actions that wait for the next idle. Each has a token of what it is for, and is dropped
/// when that has expired.
class MessageQueue {
  public:
    using Life = std::weak_ptr<bool>;

    /// [any-thread] `message` is sent to `target`. Without a target WM_DEFERRED_CREATE makes the windows that
    /// were put off, and nothing else does anything.
    void Post(CWnd* target, Life life, UINT message, WPARAM wParam, LPARAM lParam);
    /// [any-thread] `action` is run.
    void Post(Life life, std::function<void()> action);
    /// [any-thread] Puts off the making of a window until a WM_DEFERRED_CREATE, which it posts.
    void DeferCreate(Life life, std::function<void()> create);
    /// Handles what was posted before this call, in order, until `stop` says so.
    void Run(const std::function<bool()>& stop);
    /// Drops what was posted for `target`.
    void Forget(const CWnd& target);
    void Clear();

  private:
    struct Posted {
        Life life;
        std::function<void()> action;
        const CWnd* target = nullptr; ///< of a message
    };
    std::vector<Posted> Take(std::vector<Posted>& from);
    static void RunAll(const std::vector<Posted>& all, const std::function<bool()>& stop);

    std::mutex lock_;
    std::vector<Posted> posted_;
    std::vector<Posted> creations_;
};

} // namespace vocafade
