// SPDX-License-Identifier: MIT
#include "editor/in_vocafade.h"

namespace vocafade {

// clang-format off
BEGIN_MESSAGE_MAP(CInVocafade, CWinApp)
END_MESSAGE_MAP()
// clang-format on

} // namespace vocafade
