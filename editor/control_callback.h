// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade {

/// What a bitmap control calls when the user has changed it: its id, its new value and the context that it
/// was made with. The answer is ignored.
using ControlCallbackFunction = bool (*)(int id, float value, void* context);

} // namespace vocafade
