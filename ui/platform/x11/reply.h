// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <memory>

namespace vocafade::platform::x11 {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
/// What the library allocated for us: a reply, an event, an error.
template <class T>
using Reply = std::unique_ptr<T, FreeDeleter>;

} // namespace vocafade::platform::x11
