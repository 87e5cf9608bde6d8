// SPDX-License-Identifier: MIT
#include "ui/menu.h"

#include "ui/popup.h"

namespace vocafade {

bool CMenu::CreatePopupMenu() {
    items_.clear();
    return true;
}

bool CMenu::AppendMenu(UINT flags, UINT id, const char* text, const char* margin) {
    items_.push_back({flags, id, CString(text), CString(margin)});
    return true;
}

bool CMenu::TrackPopupMenu(UINT /*flags*/, int x, int y, CWnd* owner, std::function<void()> closed) const {
    if (owner == nullptr) return false;
    std::vector<UINT> ids;
    ids.reserve(items_.size());
    int checked = -1;
    for (const Item& item : items_) {
        if ((item.flags & MF_CHECKED) != 0 && checked < 0) checked = static_cast<int>(ids.size());
        ids.push_back(item.id);
    }
    const std::weak_ptr<bool> life = owner->LifeToken();
    auto done = [owner, life, ids = std::move(ids), closed = std::move(closed)](int index) {
        if (life.expired()) return;
        if (closed) closed();
        if (index >= 0 && !life.expired())
            owner->SendMessage(WM_COMMAND, ids[static_cast<std::size_t>(index)]);
        if (!life.expired()) owner->SendMessage(WM_EXITMENULOOP);
    };
    return PopupWnd::Open(*owner, {x, y}, 0, 0, items_, checked, std::move(done));
}

} // namespace vocafade
