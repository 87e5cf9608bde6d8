// SPDX-License-Identifier: MIT
#pragma once

#include "ui/wnd.h"

namespace vocafade {

/// What the layer's own controls have in common: a font, and a look that shows the focus.
class Control : public CWnd {
  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    /// The font that was set, else the theme's.
    CFont& FontInUse() const;
    bool focused() const { return focused_; }

  private:
    mutable std::unique_ptr<CFont> ownFont_;
    bool focused_ = false;
};

} // namespace vocafade
