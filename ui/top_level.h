// SPDX-License-Identifier: MIT
#pragma once

#include "ui/backing_store.h"
#include "ui/platform/platform.h"

#include <memory>

namespace vocafade {

class CWnd;

/// What a top-level window (the panel, a dialog, a menu) has beside the windows inside it: the native window,
/// the pixels that all of them draw into, and who of them has the keyboard.
class TopLevel : public std::enable_shared_from_this<TopLevel> {
  public:
    /// `native` may be null, when the display has gone away. `owner` is what a dialog or menu belongs to.
    TopLevel(CWnd& window, platform::WindowKind kind, CWnd* owner, std::unique_ptr<platform::Window> native,
             std::unique_ptr<platform::Surface> surface);
    /// Takes the scale that the session has now for its picture and its native window, and shows nothing
    /// until it is painted.
    void SetScale(double scale);
    TopLevel(const TopLevel&) = delete;
    TopLevel& operator=(const TopLevel&) = delete;

    CWnd& window() const { return window_; }
    bool isEmbedded() const { return kind_ == platform::WindowKind::embedded; }
    CWnd* owner() const { return owner_; }
    /// Null when there is none (any more).
    platform::Window* native() const { return native_.get(); }
    const std::shared_ptr<BackingStore>& store() const { return store_; }

    /// The CWnd has new bounds.
    void SetBounds(const CRect& before, const CRect& now);
    /// What the system has lost of the picture, in the window.
    void Expose(const CRect& area);
    /// Puts onto the screen what has been drawn since.
    void Present();
    /// Ends it, while others may still hold it.
    void Close();
    bool isClosed() const { return closed_; }

    /// @name Focus
    /// @{
    /// Who gets the keys when the native window has them.
    CWnd* focus() const { return focus_; }
    /// Gives the focus to `window` (null: to nobody). The panel takes the keyboard from the host for a window
    /// that types, and gives it back for one that does not.
    void SetFocus(CWnd* window);
    /// The native window has got the keyboard, or has lost it.
    void TellFocus(bool gained, CWnd* other = nullptr);
    /// @}

  private:
    std::shared_ptr<BackingStore> MakeStore(CSize size) const;

    CWnd& window_;
    platform::WindowKind kind_;
    CWnd* owner_;
    double scale_;
    std::unique_ptr<platform::Window> native_;
    std::shared_ptr<BackingStore> store_; ///< outlives the window when it goes away while a context draws
    CWnd* focus_ = nullptr;
    bool focusTold_ = false; ///< `focus_` has had WM_SETFOCUS
    bool closed_ = false;
};

} // namespace vocafade
