// SPDX-License-Identifier: MIT
#include "ui/backing_store.h"

#include "ui/platform/platform.h"

namespace vocafade {

BackingStore::BackingStore(std::unique_ptr<platform::Surface> pixels) : surface(std::move(pixels)) {}
BackingStore::~BackingStore() = default;

void BackingStore::Changed(const CRgn& where) {
    // Many small rectangles cost more than the area around them.
    constexpr std::size_t kMostRects = 24;
    for (const CRect& r : where.rects())
        damage.Add(r);
    if (damage.rects().size() > kMostRects) damage = CRgn(damage.GetRgnBox());
}

} // namespace vocafade
