// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"

#include <filesystem>

namespace vocafade::host {

/// A VST 2.4 entry point: makes one effect and answers its descriptor, or null.
using EntryPoint = AEffect* (*)(audioMasterCallback callback);

/// A plug-in's shared object, kept in memory as long as this lives. Several may be open on the same file; the
/// system then shares the code.
class SharedObject {
  public:
    /// [any-thread] Loads `path`: a shared object, or a bundle folder `Name.vst` that holds `Name.so` (on Windows `Name.dll`).
    /// Throws `HostError` when there is no such file, it cannot be loaded or it has no entry point.
    explicit SharedObject(const std::filesystem::path& path);
    ~SharedObject();
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    /// `VSTPluginMain`, or in older shared objects `main`.
    EntryPoint entry() const { return entry_; }
    /// The shared object's absolute path (inside the bundle, when it came from one).
    const std::filesystem::path& file() const { return file_; }
    /// The folder that a plug-in is told is its own. It ends in a slash: some plug-ins put the name of a file
    /// of theirs right behind it, others cut it behind its last slash, and both end up in the folder.
    std::string folder() const;

  private:
    std::filesystem::path file_;
    void* handle_ = nullptr;
    EntryPoint entry_ = nullptr;
};

} // namespace vocafade::host
