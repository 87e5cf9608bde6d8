// SPDX-License-Identifier: MIT
#include "apps/vocafade/live/live_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/live_effect.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/session_times.h"
#include "apps/vocafade/shared/subcommand_line.h"
#ifdef VOCAFADE_HAS_PIPEWIRE
#include "apps/vocafade/live/live_device.h"
#endif

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace vocafade::command {
namespace {

constexpr const char* kLiveHelp =
    "Makes an output device named Vocafade on a PipeWire desktop: what programs "
    "play into it comes out of the\n"
    "loudspeakers without the lead voice. With the plug-in's editor in a window if "
    "there is a display; closing it\n"
    "ends the device, as Ctrl+C does.";

#ifdef VOCAFADE_HAS_PIPEWIRE
using Clock = std::chrono::steady_clock;

/// Keeps the device there, through restarts of the server, while `wait` says so; that waits a moment.
void KeepDevice(LiveEffect& effect, bool makeDefault, const std::function<bool()>& wait) {
    auto device = std::make_unique<LiveDevice>(effect, makeDefault);
    Clock::time_point lost;
    Clock::time_point lastTry;
    while (wait()) {
        ThrowIfInterrupted();
        const Clock::time_point now = Clock::now();
        if (device != nullptr) {
            device->Tick();
            const std::optional<std::string> loss = device->Loss();
            if (!loss) continue;
            PrintError("vocafade: " + *loss + "; waiting for it to come back\n");
            device.reset();
            lost = lastTry = now;
        } else if (now - lastTry >= kBetweenTries) {
            lastTry = now;
            try {
                device = std::make_unique<LiveDevice>(effect, makeDefault);
                PrintError("vocafade: it is back\n");
            } catch (const Failure& error) {
                if (now - lost > kReturnTime)
                    throw Failure(std::string("it did not come back: ") + error.what());
            }
        }
    }
}
#endif

} // namespace

int RunLive(int argumentCount, char** arguments) {
    SoundOptions sound;
    bool makeDefault = false;
    bool noWindow = false;
    bool quiet = false;
    CLI::App app(kLiveHelp, "vocafade live");
    app.add_flag("--default", makeDefault, "the default output, for as long as it is there");
    app.add_flag("--no-window", noWindow, "no window, even if there is a display");
    app.add_flag("-q,--quiet", quiet, "say nothing but errors");
    AddSoundOptions(app, sound);
    AddPluginOption(app, sound, "Sound");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
#ifdef VOCAFADE_HAS_PIPEWIRE
    PipeWireLibrary::Get(); // what is missing is said before anything opens
    LiveEffect effect(FindPlugin(sound.plugin), sound);
    WatchForInterruption();
    const std::unique_ptr<EditorWindow> window = noWindow ? nullptr : OpenWindow(effect);
    if (!quiet)
        PrintError(window ? "vocafade: play into the output device Vocafade; closing the window ends it\n"
                          : "vocafade: play into the output device Vocafade; Ctrl+C ends it\n");
    KeepDevice(effect, makeDefault, [&] {
        if (window) return window->Run(kTickMilliseconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(kTickMilliseconds));
        return true;
    });
    return kExitFine;
#else
    throw Failure("this vocafade was built without PipeWire's library (libpipewire-0.3), which 'live' needs");
#endif
}

} // namespace vocafade::command
