// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"

namespace vocafade::validate {

const host::SharedObject& Subject::Object() {
    if (!object_) object_.emplace(path_);
    return *object_;
}

bool Subject::CallsDoubles(const AEffect& effect) const {
    if (effect.processDoubleReplacing == nullptr) return false;
    return twofold_ || (effect.flags & effFlagsCanDoubleReplacing) != 0;
}

} // namespace vocafade::validate
