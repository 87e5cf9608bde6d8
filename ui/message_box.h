// SPDX-License-Identifier: MIT
#pragma once

#include "ui/winuser.h"

#include <functional>

namespace vocafade {

/// [main-thread] Shows `text` (UTF-8, may have several lines) with buttons by `type` (MB_OK, MB_OKCANCEL
/// or MB_YESNO) and returns at once; `ended` is called with IDOK, IDCANCEL, IDYES or IDNO when the
/// user has answered. Belongs to the editor whose message is being handled, else to the one opened last on
/// this thread; false, with the text on standard error, when there is none.
bool AfxMessageBox(const char* text, UINT type = MB_OK, std::function<void(int result)> ended = {});
/// [main-thread] The same with text `textId` of the string table.
bool AfxMessageBox(int textId, UINT type = MB_OK, std::function<void(int result)> ended = {});

} // namespace vocafade
