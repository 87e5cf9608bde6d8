// SPDX-License-Identifier: MIT
#include "persistence/profile.h"

#include "base/decimal.h"
#include "persistence/settings_places.h"
#include "persistence/settings_store.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <span>

namespace vocafade {
namespace {

using Scope = SettingsScope;

/// Where a value for the user is looked for, nearest first.
constexpr Scope kWidened[] = {Scope::userAnyHost, Scope::userThisHost, Scope::anyUserThisHost,
                              Scope::anyUserAnyHost};

std::optional<SettingsStore> StoreOf(const char* file) {
    std::optional<std::string> application = file != nullptr ? std::string(file) : CurrentApplication();
    if (!application) return std::nullopt;
    return SettingsStore(*std::move(application));
}

/// What these calls see of a scope: they report no failure.
SettingsDocument Read(const SettingsStore& store, Scope scope) {
    return store.Read(scope).value_or(SettingsDocument());
}

/// The caller's buffer.
class Output {
  public:
    Output(char* buf, int len)
        : buf_(buf), room_(buf != nullptr && len > 0 ? static_cast<std::size_t>(len) : 0) {}

    void Set(std::string_view text) {
        if (room_ == 0) return;
        // A stored text with a NUL in it (written by hand) ends there for callers of these functions.
        const std::size_t length = std::min(text.substr(0, text.find('\0')).size(), room_ - 1);
        std::memcpy(buf_, text.data(), length);
        buf_[length] = 0;
    }

    /// Every name with its NUL, and a last NUL. Names that do not fit are cut.
    void SetList(const std::vector<std::string>& names) {
        if (room_ == 0) return;
        std::size_t used = 0;
        for (const std::string& name : names) {
            if (room_ - used < 2) break;
            const std::size_t length = std::min(name.size(), room_ - used - 2);
            if (length == 0 && !name.empty()) break; // an empty name would end the list before its end
            std::memcpy(buf_ + used, name.data(), length);
            buf_[used + length] = 0;
            used += length + 1;
        }
        buf_[used] = 0;
    }

    int Length() const { return room_ == 0 ? 0 : static_cast<int>(std::strlen(buf_)); }

  private:
    char* buf_;
    std::size_t room_;
};

void Deliver(const SettingsSection& section, const char* entry, Output& output) {
    if (entry == nullptr) {
        output.SetList(section.Names());
    } else if (const SettingsValue* value = section.Find(entry); value != nullptr && !value->binary) {
        output.Set(value->bytes);
    }
}

/// Reads from the first of `scopes` that has the section.
void ReadEntry(const SettingsStore& store, std::span<const Scope> scopes, const char* section,
               const char* entry, Output& output) {
    for (const Scope scope : scopes) {
        const SettingsDocument document = Read(store, scope);
        const SettingsSection* found = document.FindSection(section);
        if (found == nullptr) continue;
        Deliver(*found, entry, output);
        return;
    }
}

int ReadString(std::span<const Scope> scopes, const char* section, const char* entry, const char* defaultText,
               char* buf, int len, const char* file) {
    Output output(buf, len);
    output.Set(defaultText != nullptr ? defaultText : "");
    const std::optional<SettingsStore> store = StoreOf(file);
    if (store && section != nullptr) ReadEntry(*store, scopes, section, entry, output);
    return output.Length();
}

std::optional<SettingsValue> ReadUserValue(const char* section, const char* entry, const char* file) {
    const std::optional<SettingsStore> store = StoreOf(file);
    if (!store || section == nullptr || entry == nullptr) return std::nullopt;
    const SettingsDocument document = Read(*store, Scope::userAnyHost);
    const SettingsSection* found = document.FindSection(section);
    const SettingsValue* value = found != nullptr ? found->Find(entry) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

bool Store(const SettingsStore& store, Scope scope, const char* section, const char* entry,
           const std::optional<SettingsValue>& value) {
    return store.Change(scope, [&](SettingsDocument& document) {
        if (entry == nullptr && !value) {
            document.RemoveSection(section);
            return;
        }
        SettingsSection& target = document.Section(section);
        if (entry != nullptr && value) target.Set(entry, *value);
    });
}

std::optional<SettingsValue> TextValue(const char* text) {
    if (text == nullptr) return std::nullopt;
    return SettingsValue{text, false};
}

/// The private writers tell on the standard output what has no name to be stored under.
void TellOfMissingName(const char* section, const char* entry, bool hasValue) {
    if (section == nullptr || (entry == nullptr && hasValue))
        std::printf("CFStringCreateWithCString(%s)\n", "(null)");
}

bool Write(const char* section, const char* entry, const std::optional<SettingsValue>& value,
           const char* file) {
    const std::optional<SettingsStore> store = StoreOf(file);
    if (store && section != nullptr) Store(*store, Scope::userAnyHost, section, entry, value);
    return true;
}

} // namespace

int GetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buf,
                            int len, const char* file) {
    return ReadString(kWidened, section, entry, defaultText, buf, len, file);
}

int GetPrivateProfileInt(const char* section, const char* entry, int defaultValue, const char* file) {
    const std::optional<SettingsValue> value = ReadUserValue(section, entry, file);
    if (!value || value->binary) return defaultValue;
    return ParseDecimal(value->bytes.substr(0, 255).c_str());
}

bool WritePrivateProfileString(const char* section, const char* entry, const char* value, const char* file) {
    TellOfMissingName(section, entry, value != nullptr);
    return Write(section, entry, TextValue(value), file);
}

int GetPrivateProfileBinary(const char* section, const char* entry, void* buf, int size, const char* file) {
    const std::optional<SettingsValue> value = ReadUserValue(section, entry, file);
    if (!value || !value->binary) return 0;
    if (buf != nullptr && size > 0) {
        std::memcpy(buf, value->bytes.data(), std::min(value->bytes.size(), static_cast<std::size_t>(size)));
    }
    return static_cast<int>(value->bytes.size());
}

bool WritePrivateProfileBinary(const char* section, const char* entry, const void* data, int size,
                               const char* file) {
    std::optional<SettingsValue> value;
    if (data != nullptr) {
        value.emplace(SettingsValue{
            std::string(static_cast<const char*>(data), static_cast<std::size_t>(std::max(size, 0))), true});
    }
    TellOfMissingName(section, entry, data != nullptr);
    return Write(section, entry, value, file);
}

int GetProfileString(const char* section, const char* entry, const char* defaultText, char* buf, int len) {
    constexpr Scope user[] = {Scope::userAnyHost};
    return ReadString(user, section, entry, defaultText, buf, len, nullptr);
}

bool WriteProfileString(const char* section, const char* entry, const char* value) {
    return Write(section, entry, TextValue(value), nullptr);
}

int GetSystemProfileString(const char* section, const char* entry, const char* defaultText, char* buf,
                           int len) {
    constexpr Scope everybody[] = {Scope::anyUserThisHost};
    const int length = ReadString(everybody, section, entry, "", buf, len, nullptr);
    return length != 0 ? length : ReadString(kWidened, section, entry, defaultText, buf, len, nullptr);
}

bool WriteSystemProfileString(const char* section, const char* entry, const char* value) {
    const std::optional<SettingsStore> store = StoreOf(nullptr);
    if (!store || section == nullptr) return true;
    if (!Store(*store, Scope::anyUserThisHost, section, entry, TextValue(value))) {
        Store(*store, Scope::userAnyHost, section, entry, TextValue(value));
    }
    return true;
}

int GetSystemProfileStringRoot(const char* name, const char* defaultText, char* buf, int len) {
    Output output(buf, len);
    output.Set(defaultText != nullptr ? defaultText : "");
    const std::optional<SettingsStore> store = StoreOf(nullptr);
    if (!store || name == nullptr) return output.Length();
    const auto read = [&](Scope scope) -> std::optional<SettingsValue> {
        const SettingsDocument document = Read(*store, scope);
        const SettingsValue* value = document.roots().Find(name);
        return value != nullptr && !value->binary ? std::optional(*value) : std::nullopt;
    };
    std::optional<SettingsValue> value = read(Scope::anyUserThisHost);
    if (!value || value->bytes.empty()) {
        value.reset();
        for (const Scope scope : kWidened) {
            if (!value) value = read(scope);
        }
    }
    if (value) output.Set(value->bytes);
    return output.Length();
}

} // namespace vocafade
