// SPDX-License-Identifier: MIT
#pragma once

#include "ui/region.h"

#include <memory>

namespace vocafade {

namespace platform {
class Surface;
}

/// Pixels that contexts draw into, and which of them have changed since they were last presented.
struct BackingStore {
    explicit BackingStore(std::unique_ptr<platform::Surface> pixels);
    ~BackingStore();
    BackingStore(const BackingStore&) = delete;
    BackingStore& operator=(const BackingStore&) = delete;
    void Changed(const CRgn& where);

    std::unique_ptr<platform::Surface> surface;
    CRgn damage;
};

} // namespace vocafade
