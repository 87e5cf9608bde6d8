// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <string>

namespace vocafade::test {

/// Sets a variable of this process's environment. Only between a test's steps, when no other thread reads it.
inline void SetVariable(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): see above
}

/// Takes a variable out, under the same condition.
inline void UnsetVariable(const char* name) {
    ::unsetenv(name); // NOLINT(concurrency-mt-unsafe): see above
}

} // namespace vocafade::test
