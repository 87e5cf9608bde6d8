// SPDX-License-Identifier: MIT
#pragma once

#include "host/effect.h"

#include <string>

namespace vocafade::command {

/// The programs of an effect, a line each, counted from 1.
std::string ProgramListing(host::Effect& effect);

/// The parameters of an effect with their ranges, defaults and present values, a line each.
std::string ParameterListing(host::Effect& effect);

} // namespace vocafade::command
