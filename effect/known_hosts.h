// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace vocafade {

/// [any-thread] Whether a host, by the name that it gives itself, takes the whole numbers of
/// `VstParameterProperties` for limits of the value itself, which goes from 0 to 1 whatever they say.
bool MisreadsParameterProperties(std::string_view hostProduct);

} // namespace vocafade
