// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace vocafade {

/// Which scale an editor is to be drawn at. Asked in this order: the user's environment, the host, the
/// desktop; who says nothing, or something that is no scale, is passed over. Everything is [main-thread].
class EditorScale {
  public:
    /// Reads VOCAFADE_SCALE ("1.5").
    EditorScale();
    /// What the host says from now on, in device pixels for each logical one; 0 for nothing.
    void SetHost(double scale) { host_ = scale; }
    /// The scale, in steps of a quarter from 1 to 4. `desktop` is only called when it counts; 0: says nothing.
    double Wanted(const std::function<double()>& desktop) const;

  private:
    double user_ = 0;
    double host_ = 0;
};

} // namespace vocafade
