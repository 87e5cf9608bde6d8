// SPDX-License-Identifier: MIT
#pragma once

#include "ui/control.h"
#include "ui/platform/platform.h"

#include <chrono>
#include <memory>
#include <optional>

namespace vocafade {

class TopLevel;

/// The small window with a text about what lies under the pointer. It takes neither focus nor clicks.
class TooltipWnd : public Control {
  public:
    /// Opens it near `pointer`, of `owner`'s client area, on the same screen. False when that fails.
    bool Open(WindowSession& session, CWnd& owner, CPoint pointer, const CString& text);
    const CWnd* owner() const { return owner_; }
    const char* ClassName() const override { return "TooltipWnd"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override;

  private:
    CSize SizeOfText() const;
    const CWnd* owner_ = nullptr;
};

/// Shows a window's tooltip (`CWnd::TooltipAt`) when the pointer has rested over it for a moment, and takes it
/// away with any press, turn or key, and when the pointer moves on. Time passes from idle to idle.
class Tooltips {
  public:
    explicit Tooltips(WindowSession& session) : session_(session) {}
    /// Before every event that is handled.
    void Handle(const platform::Event& event);
    /// After the events of an idle.
    void Idle();
    /// Takes the one that shows away, and shows none until the pointer moves again.
    void Cancel();
    /// The window is going.
    void Forget(const CWnd& window);

  private:
    using Clock = std::chrono::steady_clock;
    struct Rest {
        const platform::Window* native; ///< over which the pointer is
        CPoint at;
        Clock::time_point since;
    };
    /// The window under the pointer, and the pointer's place in it; null for none that may show anything.
    CWnd* Target(CPoint& point) const;

    WindowSession& session_;
    std::optional<Rest> rest_;
    CRect about_; ///< of the owner's client area: while the pointer is in it the tooltip stays
    std::unique_ptr<TooltipWnd> window_;
};

} // namespace vocafade
