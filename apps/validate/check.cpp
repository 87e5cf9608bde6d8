// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"

#include <algorithm>
#include <tuple>

namespace vocafade::validate {
namespace {

/// Null before any constructor runs, in whichever order the files' checks are then made.
constinit const Check* last = nullptr;

} // namespace

Check::Check(std::string_view checkName, int itsLevel, int itsSeconds, unsigned itsTraits,
             std::string_view itsSummary, Function itsFunction) noexcept
    : name(checkName), level(itsLevel), seconds(itsSeconds), traits(itsTraits), summary(itsSummary),
      function(itsFunction), next(last) {
    last = this;
}

std::vector<const Check*> Checks() {
    std::vector<const Check*> checks;
    for (const Check* check = last; check != nullptr; check = check->next)
        checks.push_back(check);
    std::sort(checks.begin(), checks.end(), [](const Check* a, const Check* b) {
        return std::tie(a->level, a->name) < std::tie(b->level, b->name);
    });
    return checks;
}

} // namespace vocafade::validate
