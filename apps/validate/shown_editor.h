// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/raw_effect.h"
#include "host/parent_window.h"

#include <memory>

namespace vocafade::validate {

/// An effect's editor, open in a window of its own for as long as this lives. Everything is [main-thread].
class ShownEditor {
  public:
    /// Throws `Hopeless` when the display has gone away.
    explicit ShownEditor(RawEffect& effect);
    ~ShownEditor();
    ShownEditor(const ShownEditor&) = delete;
    ShownEditor& operator=(const ShownEditor&) = delete;

    /// Lets the editor idle every 5 ms.
    void Idle(int times);
    /// Moves the pointer over the editor and turns the wheel at (x, y), each a fraction of its size. A click
    /// would be more, but it can open a dialog that waits for a person.
    void TurnWheel(double x, double y, bool up);
    host::ParentWindow& parent() { return *parent_; }
    int width() const { return width_; }
    int height() const { return height_; }
    /// Whether it told a size before it was open. It gets a window of 400 by 300 pixels else.
    bool hadSize() const { return hadSize_; }
    /// What `effEditOpen` answered.
    bool opened() const { return opened_; }

  private:
    /// What a host's event loop does, until nothing is left.
    void HandleEvents();

    RawEffect& effect_;
    int width_ = 0;
    int height_ = 0;
    bool hadSize_ = false;
    std::unique_ptr<host::ParentWindow> parent_;
    bool opened_;
};

} // namespace vocafade::validate
