// SPDX-License-Identifier: MIT
#include "apps/vocafade/edit/edit_command.h"

#include "apps/vocafade/edit/edited_programs.h"
#include "apps/vocafade/edit/editor_options.h"
#include "apps/vocafade/shared/editor_window.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/plugin_finder.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"

namespace vocafade::command {
namespace {

/// Time between two idles of the editor, in milliseconds: 30 a second.
constexpr int kIdleMilliseconds = 33;
/// Idles before a picture is taken, so that everything has been painted.
constexpr int kIdlesToPaint = 5;

/// Gives the editor the size that it asks for.
class Room : public host::HostListener {
  public:
    bool ResizeEditor(std::int32_t width, std::int32_t height) override {
        if (window != nullptr) window->Resize(width, height);
        return window != nullptr;
    }
    EditorWindow* window = nullptr;
};

void ShowUntilClosed(host::Effect& effect, Room& room) {
    std::string title = TitleOf(effect);
    EditorWindow window(effect, title, EditorWindow::Kind::managed);
    room.window = &window;
    while (window.Run(kIdleMilliseconds)) {
        ThrowIfInterrupted();
        if (const int pages = window.TakePages(); pages != 0) StepProgram(effect, pages);
        if (std::string now = TitleOf(effect); now != title) window.SetTitle(title = std::move(now));
    }
    room.window = nullptr;
}

} // namespace

int RunEdit(int argumentCount, char** arguments) {
    EditorOptions options;
    CLI::App app(
        "Opens the plug-in's editor in a window of its own. Saving from it changes the user's bank of "
        "programs,\nas it does in a music program.",
        "vocafade edit");
    AddEditorOptions(app, options);
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    Room room;
    host::Effect effect(FindPlugin(options.plugin), &room);
    PrepareEffect(effect, options);
    WatchForInterruption();
    ShowUntilClosed(effect, room);
    if (const std::string unsaved = UnsavedPrograms(effect); !unsaved.empty())
        Print("Not saved: {}\n", unsaved);
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
