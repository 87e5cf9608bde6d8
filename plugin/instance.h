// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <memory>

namespace vocafade {

class AVocafade;

/// [main-thread] A complete effect, with its editor and the resources that this needs, for the host (or the
/// other interface's wrapper) behind `audioMaster`.
std::unique_ptr<AVocafade> MakeInstance(audioMasterCallback audioMaster);

} // namespace vocafade
