// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::test {

/// What the calling thread has exchanged with X servers since it began. Programs that link x_traffic.cpp
/// count: it stands before the C library's functions that the X library calls.
struct XTraffic {
    long bytesSent = 0;
    long waits = 0; ///< for the server: to answer a question, or to take what is sent
    bool operator==(const XTraffic&) const = default;

    /// What `step` adds.
    template <typename Step>
    static XTraffic Of(const Step& step) {
        const XTraffic before = Now();
        step();
        const XTraffic after = Now();
        return {after.bytesSent - before.bytesSent, after.waits - before.waits};
    }

    static XTraffic Now();
};

} // namespace vocafade::test
