// SPDX-License-Identifier: MIT
#include "ui/message_queue.h"

#include "ui/wnd.h"

#include <utility>

namespace vocafade {

void MessageQueue::Post(CWnd* target, Life life, UINT message, WPARAM wParam, LPARAM lParam) {
    const std::scoped_lock lock(lock_);
    if (target != nullptr) {
        posted_.push_back(
            {std::move(life),
             [target, message, wParam, lParam] { target->SendMessage(message, wParam, lParam); }, target});
    } else if (message == WM_DEFERRED_CREATE) {
        posted_.push_back({std::move(life), [this] { RunAll(Take(creations_), [] { return false; }); }});
    }
}

void MessageQueue::Post(Life life, std::function<void()> action) {
    const std::scoped_lock lock(lock_);
    posted_.push_back({std::move(life), std::move(action)});
}

void MessageQueue::DeferCreate(Life life, std::function<void()> create) {
    {
        const std::scoped_lock lock(lock_);
        creations_.push_back({life, std::move(create)});
    }
    Post(nullptr, std::move(life), WM_DEFERRED_CREATE, 0, 0);
}

std::vector<MessageQueue::Posted> MessageQueue::Take(std::vector<Posted>& from) {
    const std::scoped_lock lock(lock_);
    return std::exchange(from, {});
}

void MessageQueue::RunAll(const std::vector<Posted>& all, const std::function<bool()>& stop) {
    for (const Posted& posted : all) {
        if (stop()) return;
        if (!posted.life.expired()) posted.action();
    }
}

void MessageQueue::Run(const std::function<bool()>& stop) {
    // What is posted meanwhile waits for the next idle, or a message that posts itself would hold the host
    // up.
    RunAll(Take(posted_), stop);
}

void MessageQueue::Forget(const CWnd& target) {
    const std::scoped_lock lock(lock_);
    std::erase_if(posted_, [&target](const Posted& posted) { return posted.target == &target; });
}

void MessageQueue::Clear() {
    const std::scoped_lock lock(lock_);
    posted_.clear();
    creations_.clear();
}

} // namespace vocafade
