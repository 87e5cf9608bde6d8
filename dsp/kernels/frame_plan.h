// SPDX-License-Identifier: MIT
#pragma once

#include "dsp/kernels/level.h"

#include <vector>

namespace vocafade::kernels {

/// Owns the tables of the frame transforms of one size. The twiddles are those of `CFFT`, put into the order
/// in which the vector passes read them, so that both transforms round alike.
class FramePlan {
  public:
    FramePlan() = default;
    FramePlan(const FramePlan&) = delete;
    FramePlan& operator=(const FramePlan&) = delete;

    /// [main-thread] `size` is a power of two of at least `kSmallestFrame`. With the same size as before it
    /// does nothing.
    void Init(int size);

    const TransformTables& Tables() const { return tables_; }

  private:
    TransformTables tables_{};
    std::vector<float> twiddles_;
};

} // namespace vocafade::kernels
