// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/job_pool.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace vocafade::command {

void RunJobs(std::size_t count, std::size_t workers, const std::function<void(std::size_t)>& work) {
    if (workers == 0) workers = std::max(1U, std::thread::hardware_concurrency());
    std::atomic<std::size_t> next{0};
    const auto take = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < std::min(workers, count); ++i)
        others.emplace_back(take);
    take();
}

} // namespace vocafade::command
