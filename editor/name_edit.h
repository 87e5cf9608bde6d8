// SPDX-License-Identifier: MIT
#pragma once

#include "ui/edit.h"

namespace vocafade {

/// The field of a program's name. Names are stored in Shift-JIS, so a letter that has no place there goes in
/// without its accent, or not at all when it is none without, and none goes in for
/// which there is no room: what is seen is what will be stored.
class CNameEdit : public CEdit {
  public:
    const char* ClassName() const override { return "CNameEdit"; }

  protected:
    std::string TypedText(std::string character) const override;
    bool WantsInputMethod() const override { return true; }
};

} // namespace vocafade
