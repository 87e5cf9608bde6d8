// SPDX-License-Identifier: MIT
#include "persistence/profile_cache.h"

#include <algorithm>
#include <cstring>

namespace vocafade {
namespace {

std::string TextOf(const char* text) { return text != nullptr ? text : ""; }

} // namespace

ProfileElement::ProfileElement(const char* name, const void* data, int len) : name_(TextOf(name)) {
    Set(data, len);
}

void ProfileElement::Set(const void* data, int len) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    bytes_.assign(bytes, bytes + (bytes != nullptr ? std::max(len, 0) : 0));
}

int ProfileElement::Get(void* buf, int len) const {
    const int copied = std::clamp(len, 0, static_cast<int>(bytes_.size()));
    if (buf == nullptr || copied == 0) return 0;
    std::memcpy(buf, bytes_.data(), static_cast<std::size_t>(copied));
    return copied;
}

ProfileStruct::ProfileStruct(const char* name) : name_(TextOf(name)) {}

bool ProfileStruct::Set(const char* name, const void* data, int len) {
    for (ProfileElement& element : elements_) {
        if (element.name() != TextOf(name)) continue;
        element.Set(data, len);
        return true;
    }
    if (elements_.size() < kMostElements) elements_.emplace_back(name, data, len);
    return false;
}

bool ProfileStruct::Get(const char* name, void* buf, int len) const {
    for (const ProfileElement& element : elements_) {
        if (element.name() != TextOf(name)) continue;
        element.Get(buf, len);
        return true;
    }
    return false;
}

ProfileStruct* Profile::Section(const char* name) {
    for (const auto& section : sections_) {
        if (section->name() == TextOf(name)) return section.get();
    }
    if (sections_.size() == kMostSections) return nullptr;
    return sections_.emplace_back(std::make_unique<ProfileStruct>(name)).get();
}

bool Profile::WriteProfileString(const char*, const char*, const char*) { return true; }
bool Profile::WriteProfileBinary(const char*, const char*, const void*, int) { return true; }
int Profile::GetProfileString(const char*, const char*, char*, int) { return 0; }
int Profile::GetProfileBinary(const char*, const char*, void*, int) { return 0; }
int Profile::GetProfileInt(const char*, const char*) { return 0; }

void InitProfileCacheSystem() {}
void FlushProfileCache() {}
void DisposeProfileList() {}

} // namespace vocafade
