// SPDX-License-Identifier: MIT
#include "ui/message_map.h"

namespace vocafade {

const MessageMap* CCmdTarget::GetMessageMap() const { return ThisMessageMap(); }

const MessageMap* CCmdTarget::ThisMessageMap() {
    static constexpr MessageMap map{};
    return &map;
}

const MessageEntry* CCmdTarget::FindEntry(UINT message, WPARAM wParam) const {
    for (const MessageMap* map = GetMessageMap(); map != nullptr; map = map->base ? map->base() : nullptr) {
        for (const MessageEntry& entry : map->entries) {
            if (entry.message != message) continue;
            if (message == WM_COMMAND) {
                const UINT id = LOWORD(wParam);
                if (HIWORD(wParam) != entry.code || id < entry.firstId || id > entry.lastId) continue;
            }
            return &entry;
        }
    }
    return nullptr;
}

} // namespace vocafade
