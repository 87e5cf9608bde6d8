// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>

namespace vocafade::command {

/// Calls `work` with each number from 0 to `count` - 1, `workers` at a time on as many threads, and returns
/// when all are done. 0 workers: as many as there are processors. `work` must not throw.
void RunJobs(std::size_t count, std::size_t workers, const std::function<void(std::size_t)>& work);

} // namespace vocafade::command
