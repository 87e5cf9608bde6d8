// SPDX-License-Identifier: MIT
#include "effect/avocafade.h"

namespace vocafade {

void AVocafade::Convert(const std::string& listPath, const std::string& folder) {
    ImportProgramList(programs_, listPath, folder);
}

} // namespace vocafade
