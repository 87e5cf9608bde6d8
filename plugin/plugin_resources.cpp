// SPDX-License-Identifier: MIT
#include "plugin/plugin_resources.h"

#include "editor/resource_ids.h"
#include "plugin/embedded.h"
#include "plugin/resources.h"

#include <charconv>

namespace vocafade {
namespace {

/// "\n" in the table stands for a new line.
std::string Unescape(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool newLine = text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'n';
        plain += newLine ? '\n' : text[i];
        i += newLine ? 1 : 0;
    }
    return plain;
}

} // namespace

PluginResources::PluginResources(std::string folder, std::span<const EmbeddedFile> bitmaps,
                                 std::string_view strings)
    : FolderResources(std::move(folder), bitmaps) {
    ReadStrings(strings);
    MakeSaveDialog();
}

void PluginResources::ReadStrings(std::string_view table) {
    while (!table.empty()) {
        const std::size_t end = table.find('\n');
        const std::string_view line = table.substr(0, end);
        table.remove_prefix(end == std::string_view::npos ? table.size() : end + 1);
        const std::size_t tab = line.find('\t');
        int id = 0;
        if (tab == std::string_view::npos) continue; // a comment
        if (std::from_chars(line.data(), line.data() + tab, id).ec != std::errc()) continue;
        strings_[id] = Unescape(line.substr(tab + 1));
    }
}

std::string PluginResources::LoadText(int id) const {
    const auto found = strings_.find(id);
    return found != strings_.end() ? found->second : std::string();
}

void PluginResources::MakeSaveDialog() {
    using Kind = DialogItem::Kind;
    using namespace resource;
    const auto caption = [this](int id) { return strings_[id].c_str(); };
    // Labels are as high as what stands beside them, so that their baselines meet.
    saveDialog_.id = kSaveDialog;
    saveDialog_.size = {332, 132};
    saveDialog_.title = caption(kSaveDialog);
    saveDialog_.items = {
        {Kind::label, -1, {16, 18, 100, 42}, SS_RIGHT, caption(kSaveDialogPrograms)},
        {Kind::comboBox, kSaveDialogPrograms, {108, 18, 316, 42}, WS_TABSTOP},
        {Kind::label, -1, {16, 52, 100, 76}, SS_RIGHT, caption(kSaveDialogName)},
        {Kind::edit, kSaveDialogName, {108, 52, 316, 76}, WS_TABSTOP},
        {Kind::button, IDOK, {140, 92, 224, 118}, WS_TABSTOP | BS_DEFPUSHBUTTON, caption(IDOK)},
        {Kind::button, IDCANCEL, {232, 92, 316, 118}, WS_TABSTOP, caption(IDCANCEL)},
    };
}

const DialogTemplate* PluginResources::FindDialog(int id) const {
    return id == saveDialog_.id ? &saveDialog_ : nullptr;
}

void PluginResources::Register() {
    [[maybe_unused]] static const bool once = [] {
        std::string folder = ResourceFolder();
        if (!folder.empty()) folder.pop_back(); // the slash
        SetResourceSource(std::make_shared<PluginResources>(folder, EmbeddedBitmaps(), EmbeddedStrings()));
        return true;
    }();
}

} // namespace vocafade
