// SPDX-License-Identifier: MIT
#pragma once

#include "apps/chart/image.h"
#include "host/effect.h"
#include "host/parent_window.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace vocafade::command {

/// A window of the screen with an effect's editor in it, as large as that and of fixed size. Everything is
/// [main-thread].
class EditorWindow {
  public:
    /// `managed` windows get a frame from the window manager and stay until the user closes them; others only
    /// show themselves, above everything, to be photographed.
    enum class Kind { managed, bare };

    /// Opens the editor of `effect`, which outlives the window. Throws `Failure` without a display or an
    /// editor.
    EditorWindow(host::Effect& effect, const std::string& title, Kind kind);
    ~EditorWindow();
    EditorWindow(const EditorWindow&) = delete;
    EditorWindow& operator=(const EditorWindow&) = delete;

    /// Whether a display is named, where one could open.
    static bool HasDisplay();

    void SetTitle(const std::string& title);
    /// Makes the window that large, for an editor that asks for it.
    void Resize(int width, int height);
    /// How often Page Down was pressed in the window since the last call, less how often Page Up was.
    int TakePages() { return std::exchange(pages_, 0); }
    /// Idles the editor, waits for up to `milliseconds` for something to happen and handles it. False when
    /// the user has closed the window or the display has gone away.
    bool Run(int milliseconds);
    /// What the window shows. Throws `Failure` when it cannot be read.
    Image Photograph();

  private:
    void Describe(const std::string& title);
    void SetText(const char* property, const char* type, const std::string& text);
    void FixSize();
    std::uint32_t Atom(const char* name);
    bool HandleEvents();
    std::uint32_t SymbolOf(std::uint8_t keyCode);

    host::Effect& effect_;
    std::unique_ptr<host::ParentWindow> window_;
    std::uint32_t protocols_ = 0;
    std::uint32_t deleteWindow_ = 0;
    int width_ = 0;
    int height_ = 0;
    int pages_ = 0;
};

} // namespace vocafade::command
