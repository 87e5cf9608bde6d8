// SPDX-License-Identifier: MIT
#include "ui/resources.h"

#include "base/file.h"

#include <mutex>

namespace vocafade {
namespace {

/// Bitmaps of an editor are far smaller; whatever is larger than this is not one of them.
constexpr std::int64_t kMostBytes = 64 << 20;

struct Registered {
    std::mutex lock;
    std::shared_ptr<const ResourceSource> source;
};

Registered& TheRegistered() {
    static Registered registered;
    return registered;
}

} // namespace

std::vector<std::byte> FolderResources::LoadFromFolder(int id, int times) const {
    std::vector<std::byte> bytes;
    if (folder_.empty()) return bytes;
    std::string path = folder_ + "/" + std::to_string(id);
    if (times > 1) path.append(1, '@').append(std::to_string(times)).append(1, 'x');
    CFile file;
    if (!file.Open((path + ".png").c_str(), CFile::modeRead)) return bytes;
    const std::int64_t length = file.GetLength();
    if (length <= 0 || length > kMostBytes) return bytes;
    bytes.resize(static_cast<std::size_t>(length));
    if (file.Read(bytes.data(), bytes.size()) != bytes.size()) bytes.clear();
    return bytes;
}

std::span<const std::byte> FolderResources::LoadEmbedded(int id, int times) const {
    for (const EmbeddedFile& file : embedded_)
        if (file.id == id && file.times == times) return file.bytes;
    return {};
}

void SetResourceSource(std::shared_ptr<const ResourceSource> source) {
    Registered& registered = TheRegistered();
    const std::scoped_lock lock(registered.lock);
    registered.source.swap(source);
}

std::shared_ptr<const ResourceSource> GetResourceSource() {
    Registered& registered = TheRegistered();
    const std::scoped_lock lock(registered.lock);
    return registered.source;
}

CString LoadString(int id) {
    const std::shared_ptr<const ResourceSource> source = GetResourceSource();
    return source ? CString(source->LoadText(id)) : CString();
}

} // namespace vocafade
