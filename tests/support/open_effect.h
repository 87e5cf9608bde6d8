// SPDX-License-Identifier: MIT
#pragma once

#include "effect/avocafade.h"
#include "tests/support/recording_host.h"

namespace vocafade::test {

/// An effect as a host has it after opening, which counts the messages to its user.
class OpenEffect : public AVocafade {
  public:
    OpenEffect() : AVocafade(SilentHost) {
        open();
        SetMessageHook([this](std::int32_t id, const std::string&) { messages += id == 20135 ? 1 : 1000; });
    }
    std::string NameAt(std::int32_t program) {
        char name[64] = {};
        getProgramNameIndexed(0, program, name);
        return name;
    }

    int messages = 0; ///< a thousand for each that is not about saving
};

/// The name of a program in the bytes of a whole bank file; of what is none, that.
inline std::string NameInBank(const std::string& bytes, int program) {
    if (bytes.size() != 3488 || !bytes.starts_with("CcnK")) return "no whole bank";
    return bytes.c_str() + 160 + program * 52 + 24;
}

} // namespace vocafade::test
