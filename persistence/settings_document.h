// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vocafade {

/// [any-thread] Percent escapes: letters, digits, inner spaces and `kept` stay, every other byte becomes "%"
/// and two hexadecimal digits. So any bytes make one line of plain ASCII, and any name a safe file name.
std::string PercentEncode(std::string_view bytes, std::string_view kept);
/// [any-thread] The inverse; a "%" without two hexadecimal digits stands for itself.
std::string PercentDecode(std::string_view text);

/// A value of a settings file: text or plain bytes.
struct SettingsValue {
    std::string bytes;
    bool binary = false;
};

/// A section of a settings file: named values in the order in which they were first written.
class SettingsSection {
  public:
    explicit SettingsSection(std::string name = {}) : name_(std::move(name)) {}
    const std::string& name() const { return name_; }
    /// The value of that name, or null.
    const SettingsValue* Find(std::string_view name) const;
    /// Replaces the value of that name or adds it.
    void Set(std::string_view name, SettingsValue value);
    /// The names of all values.
    std::vector<std::string> Names() const;

  private:
    friend class SettingsDocument;
    struct Line {
        std::string name;
        SettingsValue value;
        bool foreign = false; ///< a line that is not understood: kept in `name` as it stands
    };
    std::string name_;
    std::vector<Line> lines_;
    std::map<std::string, std::size_t, std::less<>> places_; ///< in `lines_`, of the values
};

/// The content of a settings file: root values, then sections. The file is text that can be read and changed
/// by hand:
///
///     root=text
///     [section]
///     entry=text
///     entry:=%00%FFbytes
///
/// Names and values are percent-encoded. Lines that are not understood are kept where they stand.
class SettingsDocument {
  public:
    SettingsDocument() = default;
    /// Reads any bytes; of a value that is there twice the last counts.
    explicit SettingsDocument(std::string_view text);
    std::string Text() const;

    SettingsSection& roots() { return roots_; }
    const SettingsSection& roots() const { return roots_; }
    const SettingsSection* FindSection(std::string_view name) const;
    /// The section of that name, made when there is none.
    SettingsSection& Section(std::string_view name);
    void RemoveSection(std::string_view name);
    const std::vector<SettingsSection>& sections() const { return sections_; }

  private:
    SettingsSection roots_;
    std::vector<SettingsSection> sections_;
    std::map<std::string, std::size_t, std::less<>> places_; ///< in `sections_`
};

} // namespace vocafade
