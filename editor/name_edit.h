// SPDX-License-Identifier: MIT
#pragma once

#include "ui/edit.h"

namespace vocafade {

/// The field of a program's name. Names are stored in Shift-JIS: a letter that is not in it goes in without
/// its accent, and is refused when it is not in it without one either. A letter for which there is no room is
/// refused, too. So what is seen is what will be stored. Everything is [main-thread].
class CNameEdit : public CEdit {
  public:
    const char* ClassName() const override { return "CNameEdit"; }

  protected:
    std::string TypedText(std::string character) const override;
    bool WantsInputMethod() const override { return true; }
};

} // namespace vocafade
