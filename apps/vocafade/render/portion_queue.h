// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace vocafade::command {

/// Hands things from one thread to another, in order. How many are on their way is up to the users: here a fixed
/// number of portions goes round. Every function is [any-thread].
template <typename Thing>
class PortionQueue {
  public:
    void Put(Thing thing) {
        {
            const std::lock_guard lock(mutex_);
            if (closed_) return;
            things_.push_back(std::move(thing));
        }
        changed_.notify_one();
    }
    /// Waits for the next; nothing once the queue is closed and empty.
    std::optional<Thing> Take() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return closed_ || !things_.empty(); });
        if (things_.empty()) return std::nullopt;
        std::optional<Thing> thing(std::move(things_.front()));
        things_.pop_front();
        return thing;
    }
    /// Nothing more comes; what is there can still be taken.
    void Close() {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }
    /// Nothing more comes, and what is there is dropped.
    void Abandon() {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        things_.clear();
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Thing> things_;
    bool closed_ = false;
};

} // namespace vocafade::command
