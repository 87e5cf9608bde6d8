// SPDX-License-Identifier: MIT
#pragma once

#include "ui/resources.h"

#include <map>
#include <string>
#include <string_view>

namespace vocafade {

/// The plug-in's bitmaps (its resource folder's, or the copies inside the library), texts and dialogs.
class PluginResources : public FolderResources {
  public:
    /// `strings` is a string table as `EmbeddedStrings` gives it.
    PluginResources(std::string folder, std::span<const EmbeddedFile> bitmaps, std::string_view strings);

    std::string LoadText(int id) const override;
    const DialogTemplate* FindDialog(int id) const override;

    /// [any-thread] Makes the plug-in's own resources the ones that the window layer loads from. Only the
    /// first call does anything.
    static void Register();

  private:
    void ReadStrings(std::string_view table);
    void MakeSaveDialog();

    std::map<int, std::string> strings_;
    DialogTemplate saveDialog_;
};

} // namespace vocafade
