// SPDX-License-Identifier: MIT
#include "effect/known_hosts.h"

#include <algorithm>

namespace vocafade {
namespace {

/// The answers to `audioMasterGetProductString`, byte for byte, of hosts in which the fault was seen. They
/// need no ranges: without them they take the value for what it is.
constexpr std::string_view kMisreadingHosts[] = {
    "Ardour",   // 7.3.0: lanes and sliders from 20 to 20000 or 0 to 127, all of which sets the maximum
    "Qtractor", // 0.9.31: a session keeps whole numbers only, so that it opens muted
};

} // namespace

bool MisreadsParameterProperties(std::string_view hostProduct) {
    return std::ranges::find(kMisreadingHosts, hostProduct) != std::end(kMisreadingHosts);
}

} // namespace vocafade
