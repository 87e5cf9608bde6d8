// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocafade {

/// [main-thread] One entry of the cache: a name and a private copy of its bytes.
class ProfileElement {
  public:
    ProfileElement(const char* name, const void* data, int len);
    const std::string& name() const { return name_; }
    /// Replaces the bytes.
    void Set(const void* data, int len);
    /// Copies at most `len` bytes to `buf`; the number copied.
    int Get(void* buf, int len) const;

  private:
    std::string name_;
    std::vector<std::uint8_t> bytes_;
};

/// [main-thread] One section of the cache: a name and up to 256 entries.
class ProfileStruct {
  public:
    static constexpr std::size_t kMostElements = 256;

    explicit ProfileStruct(const char* name);
    const std::string& name() const { return name_; }
    /// Replaces the entry's bytes and returns true, or appends a new entry and returns false. A full section
    /// takes no new entry.
    bool Set(const char* name, const void* data, int len);
    /// Copies at most `len` bytes of the entry; false when it is missing.
    bool Get(const char* name, void* buf, int len) const;

  private:
    std::string name_;
    std::vector<ProfileElement> elements_;
};

/// A cache of up to 16 sections. The calls that carry the profile vocabulary do nothing: what is read is
/// always what the settings store holds.
class Profile {
  public:
    static constexpr std::size_t kMostSections = 16;

    /// The section of exactly that name, made on first use; null when there are 16 others.
    ProfileStruct* Section(const char* name);

    bool WriteProfileString(const char* section, const char* entry, const char* value);
    bool WriteProfileBinary(const char* section, const char* entry, const void* data, int len);
    int GetProfileString(const char* section, const char* entry, char* buf, int len);
    int GetProfileBinary(const char* section, const char* entry, void* buf, int len);
    int GetProfileInt(const char* section, const char* entry);

  private:
    std::vector<std::unique_ptr<ProfileStruct>> sections_;
};

/// These do nothing.
void InitProfileCacheSystem();
void FlushProfileCache();
void DisposeProfileList();

} // namespace vocafade
