// SPDX-License-Identifier: MIT
#include "persistence/settings_document.h"

#include <cstddef>

namespace vocafade {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kKeptInNames = "-_.";
/// Everything else that can be printed, but for the percent sign.
constexpr std::string_view kKeptInValues = "-_.!\"#$&'()*+,/:;<=>?@[\\]^`{|}~";

bool IsAlphanumeric(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

int HexValue(char c) {
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    const std::size_t value = kHexDigits.find(c);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

} // namespace

std::string PercentEncode(std::string_view bytes, std::string_view kept) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        // Editors are prone to cut spaces at the ends of a line.
        const bool innerSpace = c == ' ' && i != 0 && i + 1 != bytes.size();
        if (IsAlphanumeric(c) || innerSpace || (c != '\0' && kept.find(c) != std::string_view::npos)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
        }
    }
    return text;
}

std::string PercentDecode(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape =
            text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0;
        if (escape) {
            bytes += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

const SettingsValue* SettingsSection::Find(std::string_view name) const {
    const auto found = places_.find(name);
    return found != places_.end() ? &lines_[found->second].value : nullptr;
}

void SettingsSection::Set(std::string_view name, SettingsValue value) {
    if (const auto found = places_.find(name); found != places_.end()) {
        lines_[found->second].value = std::move(value);
        return;
    }
    places_.emplace(name, lines_.size());
    lines_.push_back({std::string(name), std::move(value), false});
}

std::vector<std::string> SettingsSection::Names() const {
    std::vector<std::string> names;
    for (const Line& line : lines_) {
        if (!line.foreign) names.push_back(line.name);
    }
    return names;
}

SettingsDocument::SettingsDocument(std::string_view text) {
    // Index and not pointer: sections move when there are more of them.
    std::size_t current = 0; // 0 for the roots
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
            const SettingsSection& section = Section(PercentDecode(line.substr(1, line.size() - 2)));
            current = static_cast<std::size_t>(&section - sections_.data()) + 1;
            continue;
        }
        SettingsSection& section = current == 0 ? roots_ : sections_[current - 1];
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || line.front() == '#') {
            section.lines_.push_back({std::string(line), {}, true});
            continue;
        }
        const bool binary = equals > 0 && line[equals - 1] == ':';
        section.Set(PercentDecode(line.substr(0, equals - (binary ? 1 : 0))),
                    {PercentDecode(line.substr(equals + 1)), binary});
    }
}

std::string SettingsDocument::Text() const {
    std::string text;
    const auto write = [&text](const SettingsSection& section) {
        for (const SettingsSection::Line& line : section.lines_) {
            text += line.foreign ? line.name
                                 : PercentEncode(line.name, kKeptInNames) + (line.value.binary ? ":=" : "=") +
                                       PercentEncode(line.value.bytes, kKeptInValues);
            text += '\n';
        }
    };
    write(roots_);
    for (const SettingsSection& section : sections_) {
        text += '[' + PercentEncode(section.name(), kKeptInNames) + "]\n";
        write(section);
    }
    return text;
}

const SettingsSection* SettingsDocument::FindSection(std::string_view name) const {
    const auto found = places_.find(name);
    return found != places_.end() ? &sections_[found->second] : nullptr;
}

SettingsSection& SettingsDocument::Section(std::string_view name) {
    const auto [place, isNew] = places_.try_emplace(std::string(name), sections_.size());
    return isNew ? sections_.emplace_back(std::string(name)) : sections_[place->second];
}

void SettingsDocument::RemoveSection(std::string_view name) {
    const auto found = places_.find(name);
    if (found == places_.end()) return;
    const std::size_t place = found->second;
    sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(place));
    places_.erase(found);
    for (auto& entry : places_)
        if (entry.second > place) --entry.second;
}

} // namespace vocafade
