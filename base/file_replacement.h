// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"

#include <string>

namespace vocafade {

/// Writes a file so that its name always stands for a whole one: the new content goes into a file of its own
/// beside the old one and takes the name only when every byte is on the disk. A process that dies on the way
/// leaves the old file, and beside it perhaps an unfinished hidden one, which the next replacement of the
/// same file removes when a minute has gone by. A symbolic link is followed, so that what it points to is
/// replaced, not the link. Not for the audio thread; one object serves one thread at a time.
class FileReplacement {
  public:
    FileReplacement() = default;
    /// Discards what was written unless `Commit` succeeded.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Makes the new file beside `path`. False, with `errno` set, when that cannot be done.
    bool Begin(const std::string& path);
    /// The new file, to be written to.
    CFile& file() { return file_; }
    /// Puts the new file in the place of the old one. False, with the old file as it was, when any byte was
    /// not written or the name could not be taken.
    bool Commit();

  private:
    void Discard();

    std::string target_;
    std::string temporary_;
    CFile file_;
};

/// Makes `folder` and the folders above it that are missing; false, with `errno` set, when it does not exist
/// afterwards.
bool MakeFolders(const std::string& folder);

} // namespace vocafade
