// SPDX-License-Identifier: MIT
#include "apps/vocafade/subcommands.h"

namespace vocafade::command {

std::span<const Subcommand> Subcommands() { return {}; }

} // namespace vocafade::command
