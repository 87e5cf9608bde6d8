// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/play_command.h"

#include "apps/vocafade/play/play_session.h"
#include "apps/vocafade/render/library.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/sound_options.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/text.h"

#include <charconv>
#include <filesystem>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr int kUsualBuffer = 80; // milliseconds
constexpr int kLeastBuffer = 5;
constexpr int kMostBuffer = 5000;

constexpr const char* kPlayHelp =
    "Plays songs without their lead voice, with the plug-in's editor in a window if there is a display.\n"
    "\n"
    "Keys: Space pauses; left and right wind by 5 seconds, with Shift by 30; n and p go to the next and the\n"
    "previous song; v leaves the voice in or takes it out; q ends.";

/// "83", "1:23" or "1:02:03.5" in seconds.
double ParseTime(const std::string& text) {
    const auto refuse = [&]() {
        throw UsageError(fmt::format("--loop wants two times, as 83.5 or 1:23.5, not '{}'", Printable(text)));
    };
    double seconds = 0.0;
    std::string_view rest = text;
    for (int parts = 1;; ++parts) {
        const std::size_t colon = rest.find(':');
        const std::string_view part = rest.substr(0, colon);
        double number = 0.0;
        const auto [end, error] =
            std::from_chars(part.data(), part.data() + part.size(), number, std::chars_format::fixed);
        if (error != std::errc() || end != part.data() + part.size() || !(number >= 0.0) || number > 1e6 ||
            parts > 3)
            refuse();
        seconds = seconds * 60.0 + number;
        if (colon == std::string_view::npos) return seconds;
        rest.remove_prefix(colon + 1);
    }
}

/// The songs that were named, those of folders one by one.
std::vector<std::string> SongsOf(const std::vector<std::string>& named) {
    std::vector<std::string> songs;
    std::error_code error;
    for (const std::string& name : named) {
        if (!std::filesystem::is_directory(name, error)) {
            songs.push_back(name);
            continue;
        }
        for (const Library::File& song : WalkLibrary({&name, 1}, {}).songs)
            songs.push_back(song.path.string());
    }
    if (songs.empty()) throw Failure("there is no sound file in what was named");
    return songs;
}

} // namespace

int RunPlay(int argumentCount, char** arguments) {
    PlaySettings settings;
    SoundOptions sound;
    std::vector<std::string> named;
    std::vector<std::string> loop;
    int buffer = kUsualBuffer;
    bool noWindow = false;
    CLI::App app(kPlayHelp, "vocafade play");
    app.add_option("SONG", named, "stereo sound files, or folders of them")->required();
    app.add_option("--loop", loop, "repeat what lies between two times of the song, as 83.5 or 1:23.5")
        ->type_name("FROM TO")
        ->expected(2);
    app.add_flag("--no-window", noWindow, "no window, even if there is a display");
    app.add_option(
           "--buffer", buffer,
           fmt::format("milliseconds that the sound server holds, {} to {} (default {}): more for a busy "
                       "machine, less for keys that act at once",
                       kLeastBuffer, kMostBuffer, kUsualBuffer))
        ->type_name("MS");
    app.add_flag("-q,--quiet", settings.quiet, "say nothing but errors");
    AddSoundOptions(app, sound);
    AddPluginOption(app, sound, "Sound");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    if (buffer < kLeastBuffer || buffer > kMostBuffer)
        throw UsageError(fmt::format("--buffer {} is out of range: it goes from {} to {}", buffer,
                                     kLeastBuffer, kMostBuffer));
    settings.songs = SongsOf(named);
    if (!loop.empty()) {
        settings.loop = Passage{ParseTime(loop[0]), ParseTime(loop[1])};
        if (settings.loop->from >= settings.loop->to)
            throw UsageError("--loop: the second time must be behind the first");
        if (settings.songs.size() != 1) throw UsageError("--loop goes with one song");
    }
    settings.bufferSeconds = buffer / 1000.0;
    settings.window = !noWindow;
    LiveEffect effect(FindPlugin(sound.plugin), sound);
    WatchForInterruption();
    return PlaySession(effect, settings).Run();
}

} // namespace vocafade::command
