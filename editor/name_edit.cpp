// SPDX-License-Identifier: MIT
#include "editor/name_edit.h"

#include "base/text_encoding.h"
#include "ui/platform/platform.h"

namespace vocafade {
namespace {

bool CanBeStored(const std::string& character) {
    return character == "?" || !(UTF8ToSJSINS(character.c_str()) == "?");
}

} // namespace

std::string CNameEdit::TypedText(std::string character) const {
    if (CanBeStored(character)) return character;
    character = platform::BaseLetter(character);
    return CanBeStored(character) ? character : std::string();
}

} // namespace vocafade
