// SPDX-License-Identifier: MIT
#include "apps/vocafade/edit/edit_command.h"

#include "apps/vocafade/edit/editor_options.h"
#include "apps/vocafade/shared/editor_window.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"

namespace vocafade::command {
namespace {

/// Time between two idles of the editor, in milliseconds: 30 a second.
constexpr int kIdleMilliseconds = 33;
/// Idles before a picture is taken, so that everything has been painted.
constexpr int kIdlesToPaint = 5;

} // namespace

int RunEdit(int argumentCount, char** arguments) {
    EditorOptions options;
    CLI::App app(
        "Opens the plug-in's editor in a window of its own. Saving from it changes the user's bank of "
        "programs,\nas it does in a music program.",
        "vocafade edit");
    AddEditorOptions(app, options);
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    host::Effect effect(FindPlugin(options.plugin));
    PrepareEffect(effect, options);
    WatchForInterruption();
    EditorWindow window(effect, "Vocafade", EditorWindow::Kind::managed);
    while (window.Run(kIdleMilliseconds))
        ThrowIfInterrupted();
    return kExitFine;
}

int RunScreenshot(int argumentCount, char** arguments) {
    EditorOptions options;
    std::string output;
    CLI::App app(
        "Writes a picture of the plug-in's editor. Needs a display; without one, run it under xvfb-run.",
        "vocafade screenshot");
    app.add_option("OUT", output, "PNG file to write")->required();
    AddEditorOptions(app, options);
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    host::Effect effect(FindPlugin(options.plugin));
    CheckPictureTarget(output, effect.file());
    PrepareEffect(effect, options);
    EditorWindow window(effect, "Vocafade", EditorWindow::Kind::bare);
    for (int i = 0; i < kIdlesToPaint; ++i)
        if (!window.Run(kIdleMilliseconds)) throw Failure("the display went away");
    WriteWhole(output, EncodePng(window.Photograph()));
    return kExitFine;
}

} // namespace vocafade::command
