// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/check.h"

#include <string>
#include <vector>

namespace vocafade::validate {

struct Finding {
    Kind kind;
    std::string sentence;
};

/// What came of one check.
struct Outcome {
    std::vector<Finding> findings;
    std::uint64_t attempts = 0;
    double seconds = 0.0;
    std::string output;    ///< the end of what the plug-in (or a sanitizer) wrote
    bool unusable = false; ///< it cannot be loaded at all

    bool has(Kind kind) const;
};

/// [main-thread] Carries out the check in a process of its own, which may crash, hang or run out of memory,
/// and waits for its end. Throws `std::system_error` when the system gives no process.
Outcome RunCheck(const Check& check, Subject& subject);

} // namespace vocafade::validate
