// SPDX-License-Identifier: MIT
#pragma once

#include "ui/message_map.h"

namespace vocafade {

/// The application object of the window layer, with an empty message map: a plug-in has no application of its
/// own, so it adds nothing.
class CInVocafade : public CWinApp {
    DECLARE_MESSAGE_MAP()
};

} // namespace vocafade
