// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace vocafade::host {

/// What goes wrong with a shared object, an effect or a bank file, as a sentence for the user.
class HostError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace vocafade::host
