// SPDX-License-Identifier: MIT
#include "apps/vocafade/subcommands.h"

#include "apps/vocafade/edit/edit_command.h"
#include "apps/vocafade/formants/formants_command.h"
#include "apps/vocafade/live/live_command.h"
#include "apps/vocafade/older_formats/chunks_command.h"
#include "apps/vocafade/older_formats/convert_command.h"
#include "apps/vocafade/older_formats/settings_command.h"
#include "apps/vocafade/open/open_command.h"
#include "apps/vocafade/play/play_command.h"

namespace vocafade::command {

std::span<const Subcommand> Subcommands() {
    static constexpr Subcommand subcommands[] = {
        {"play", "play songs without their lead voice", RunPlay},
        {"live", "an output device that takes the lead voice out", RunLive},
        {"open", "what the desktop's menu starts: play, or live", RunOpen},
        {"edit", "open the plug-in's editor in a window", RunEdit},
        {"screenshot", "write a picture of the editor", RunScreenshot},
        {"formants", "show where in the spectrum a voice lies", RunFormants},
        {"convert", "turn an older program list into a bank", RunConvert},
        {"chunks", "list, read and write the user chunks of an AIFF file", RunChunks},
        {"settings", "show and change stored settings", RunSettings},
    };
    return subcommands;
}

} // namespace vocafade::command
