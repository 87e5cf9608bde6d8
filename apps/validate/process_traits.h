// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vocafade::validate {

/// Something that belongs to the whole process, and that a plug-in must therefore leave as it is.
struct ProcessTrait {
    std::string whenChanged; ///< what is to be said of the value when it is not what it was
    std::string value;
};

/// All of them, the same ones in the same order at every call.
std::vector<ProcessTrait> ReadProcessTraits();

} // namespace vocafade::validate
