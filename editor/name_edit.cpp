// SPDX-License-Identifier: MIT
#include "editor/name_edit.h"

#include "base/text_encoding.h"
#include "effect/program.h"
#include "ui/platform/platform.h"

namespace vocafade {
namespace {

bool CanBeStored(const std::string& character) {
    return character == "?" || !(UTF8ToSJSINS(character.c_str()) == "?");
}

} // namespace

std::string CNameEdit::TypedText(std::string character) const {
    if (!CanBeStored(character)) character = platform::BaseLetter(character);
    if (!CanBeStored(character)) return {};
    const int bytes = UTF8ToSJSINS(TextWith(character).c_str()).GetLength();
    return bytes <= static_cast<int>(kProgramNameBytes) ? character : std::string();
}

} // namespace vocafade
