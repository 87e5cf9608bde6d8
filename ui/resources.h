// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"
#include "ui/geometry.h"
#include "ui/winuser.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vocafade {

/// One control of a dialog template.
struct DialogItem {
    enum class Kind { label, edit, comboBox, button };
    Kind kind = Kind::label;
    int id = -1;
    CRect rect;            ///< in the dialog, pixels
    UINT style = 0;        ///< beside WS_CHILD | WS_VISIBLE, which every control has; WS_TABSTOP for Tab
    const char* text = ""; ///< UTF-8
};

/// What a dialog looks like before its `OnInitDialog`.
struct DialogTemplate {
    int id = 0;
    CSize size;                    ///< client size in pixels
    const char* title = "";        ///< UTF-8
    std::vector<DialogItem> items; ///< in tab order
};

/// Where numbered resources come from. The plug-in implements it (`FolderResources` does the files' part) and
/// registers it once, when its library is first used; all operations may be called from any thread.
class ResourceSource {
  public:
    virtual ~ResourceSource() = default;
    /// [any-thread] The bytes of "<id>.png" in the resource folder, or, where `times` is above 1, of
    /// "<id>@<times>x.png", drawn that many times as large; empty when there is none.
    virtual std::vector<std::byte> LoadFromFolder(int id, int times) const = 0;
    /// [any-thread] The bytes of the copy of that file inside the library; empty when there is none.
    virtual std::span<const std::byte> LoadEmbedded(int id, int times) const = 0;
    /// [any-thread] Text `id` of the string table, UTF-8; empty when there is none.
    virtual std::string LoadText(int id) const = 0;
    /// [any-thread] Dialog template `id`; null when there is none. It outlives every dialog made from it.
    virtual const DialogTemplate* FindDialog(int id) const = 0;
};

/// A bitmap that was built into the library.
struct EmbeddedFile {
    int id = 0;
    int times = 1; ///< as large as its number stands for
    std::span<const std::byte> bytes;
};

/// The files' half of a resource source: a folder, and the copies inside the library where it is missing.
class FolderResources : public ResourceSource {
  public:
    /// `folder`: without a slash at its end, may be empty or missing. `embedded` outlives this object.
    FolderResources(std::string folder, std::span<const EmbeddedFile> embedded)
        : folder_(std::move(folder)), embedded_(embedded) {}
    std::vector<std::byte> LoadFromFolder(int id, int times) const override;
    std::span<const std::byte> LoadEmbedded(int id, int times) const override;
    std::string LoadText(int) const override { return {}; }
    const DialogTemplate* FindDialog(int) const override { return nullptr; }

  private:
    std::string folder_;
    std::span<const EmbeddedFile> embedded_;
};

/// [any-thread] Sets where `LoadResourceBitmap`, `LoadString` and `CDialog` find their resources, for all
/// instances of the plug-in that share this library (each copy of the library has its own). Setting it again
/// replaces it for what is loaded afterwards.
void SetResourceSource(std::shared_ptr<const ResourceSource> source);
/// [any-thread] The source that was set; null before.
std::shared_ptr<const ResourceSource> GetResourceSource();
/// [any-thread] Text `id` of the string table, UTF-8; empty when there is none.
CString LoadString(int id);

} // namespace vocafade
