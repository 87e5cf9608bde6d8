// SPDX-License-Identifier: MIT
#include "apps/validate/process_state.h"

#include <algorithm>
#include <vector>

namespace vocafade::validate {

void ReportLeftovers(int warm, int rounds, std::string_view what, const std::function<bool(int)>& round,
                     Report& report, Allowance allowed) {
    bool graphicsDriver = false;
    const auto repeat = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            graphicsDriver = round(i) || graphicsDriver;
        return LookAtProcess();
    };
    const ProcessState before = repeat(0, warm);
    const ProcessState middle = repeat(warm, warm + rounds / 2);
    const ProcessState after = repeat(warm + rounds / 2, warm + rounds);
    const std::int64_t resident = (after.residentBytes - before.residentBytes) / 1024;
#ifndef VOCAFADE_SANITIZED // which count the heap in the validator's place
    report.Measured("{} times {}: heap {:+} bytes, then {:+}", rounds, what,
                    middle.heapBytes - before.heapBytes, after.heapBytes - middle.heapBytes);
#endif
    report.Measured(
        "{} times {}: resident {:+} kB, {:+} threads, {:+} thread-local keys, {:+} {}, {:+} mappings", rounds,
        what, resident, after.threads - before.threads, after.threadKeys - before.threadKeys,
        after.handles - before.handles, kHandles, after.mappings - before.mappings);
    const auto tell = [&](int number, const char* things, int allowedNumber = 0) {
        if (number > allowedNumber)
            report.Fault("after {} times {} {} {} are left over", rounds, what, number, things);
    };
    tell(after.threads - before.threads, "threads");
    tell(after.threadKeys - before.threadKeys, "thread-local keys");
    // Where the system opens some for itself, at any time, those count that are lost in both halves.
    const int handles = kHandlesOfSystem == 0
                            ? after.handles - before.handles
                            : 2 * std::min(middle.handles - before.handles, after.handles - middle.handles);
    tell(handles, kHandles, 2 * kHandlesOfSystem + rounds * allowed.handles);

    std::vector<std::string> memory;
#ifndef VOCAFADE_SANITIZED // the sanitizers map memory for records of their own, and find leaks themselves
    if (after.mappings > before.mappings + 8)
        memory.push_back(fmt::format("after {} times {} {} mappings of memory are left over", rounds, what,
                                     after.mappings - before.mappings));
    if (resident > 16384)
        memory.push_back(
            fmt::format("after {} times {} the process has grown by {} kB", rounds, what, resident));
#endif
    constexpr std::int64_t kLeastLeak = 64; // bytes a round
    const std::int64_t lost =
        std::min(middle.heapBytes - before.heapBytes, after.heapBytes - middle.heapBytes) / (rounds / 2);
    if (lost > allowed.heapBytes + kLeastLeak)
        memory.push_back(fmt::format("each time {} {} bytes of the heap are lost", what, lost));
    for (const std::string& sentence : memory) {
        if (graphicsDriver) {
            report.Remark("{}, some of it perhaps by the graphics driver", sentence);
        } else {
            report.Fault("{}", sentence);
        }
    }
}

} // namespace vocafade::validate
