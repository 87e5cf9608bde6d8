// SPDX-License-Identifier: MIT
#include "apps/vocafade/edit_command.h"

#include "apps/vocafade/editor_options.h"
#include "apps/vocafade/editor_window.h"
#include "apps/vocafade/failures.h"
#include "apps/vocafade/interruption.h"
#include "apps/vocafade/plugin_finder.h"
#include "apps/vocafade/text.h"
#include "base/file_replacement.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <fmt/format.h>
#include <png.h>
#include <system_error>

namespace vocafade::command {
namespace {

/// Time between two idles of the editor, in milliseconds: 30 a second.
constexpr int kIdleMilliseconds = 33;
/// Idles before a picture is taken, so that everything has been painted.
constexpr int kIdlesToPaint = 5;

std::vector<std::uint8_t> EncodePng(const Picture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    std::vector<std::uint8_t> bytes;
    if (png_image_write_to_memory(&image, nullptr, &size, 0, picture.pixels.data(), 0, nullptr) != 0) {
        bytes.resize(size);
        if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(), 0, nullptr) != 0)
            return bytes;
    }
    throw Failure(fmt::format("the picture cannot be encoded: {}", image.message));
}

void WritePicture(const std::string& path, const Picture& picture) {
    const std::vector<std::uint8_t> bytes = EncodePng(picture);
    FileReplacement file;
    const bool written = file.Begin(path) && (file.file().Write(bytes.data(), bytes.size()), file.Commit());
    if (!written)
        throw Failure(
            fmt::format("cannot write '{}': {}", Printable(path), std::generic_category().message(errno)));
}

} // namespace

int RunEdit(int argumentCount, char** arguments) {
    EditorOptions options;
    CLI::App app(
        "Opens the plug-in's editor in a window of its own. Saving from it changes the user's bank of "
        "programs,\nas it does in a music program.",
        "vocafade edit");
    AddEditorOptions(app, options);
    if (ParseOrAnswer(app, argumentCount, arguments)) return kExitFine;
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
    if (ParseOrAnswer(app, argumentCount, arguments)) return kExitFine;
    host::Effect effect(FindPlugin(options.plugin));
    PrepareEffect(effect, options);
    EditorWindow window(effect, "Vocafade", EditorWindow::Kind::bare);
    for (int i = 0; i < kIdlesToPaint; ++i)
        if (!window.Run(kIdleMilliseconds)) throw Failure("the display went away");
    WritePicture(output, window.Photograph());
    return kExitFine;
}

} // namespace vocafade::command
