// SPDX-License-Identifier: MIT
#include "apps/vocafade/subcommands.h"

#include "apps/vocafade/edit_command.h"

namespace vocafade::command {

std::span<const Subcommand> Subcommands() {
    static constexpr Subcommand kSubcommands[] = {
        {"edit", "open the plug-in's editor in a window", &RunEdit},
        {"screenshot", "write a picture of the editor", &RunScreenshot},
    };
    return kSubcommands;
}

} // namespace vocafade::command
