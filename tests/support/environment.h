// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <string>

namespace vocafade::test {

#if defined(_WIN32)
/// What says where the user's configuration is.
inline constexpr char kConfigurationVariable[] = "APPDATA";

inline void SetVariable(const char* name, const std::string& value) { ::_putenv_s(name, value.c_str()); }
inline void UnsetVariable(const char* name) { ::_putenv_s(name, ""); }
#else
inline constexpr char kConfigurationVariable[] = "XDG_CONFIG_HOME";

/// Sets a variable of this process's environment. Only between a test's steps, when no other thread reads it.
inline void SetVariable(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): see above
}

/// Takes a variable out, under the same condition.
inline void UnsetVariable(const char* name) {
    ::unsetenv(name); // NOLINT(concurrency-mt-unsafe): see above
}
#endif

} // namespace vocafade::test
