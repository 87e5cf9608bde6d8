// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vocafade::command {

/// The output that was the user's chosen default before this device took its place, kept in a file
/// (`$XDG_STATE_HOME/vocafade/default-output`) so that the next run can give it back when this one is killed. The text is
/// the session manager's own.
class FormerDefault {
  public:
    /// [main-thread] Makes and holds the file, unless another run holds it; without `make` only one that is there.
    /// Where there can be none, nothing is kept.
    explicit FormerDefault(bool make);
    ~FormerDefault();
    FormerDefault(const FormerDefault&) = delete;
    FormerDefault& operator=(const FormerDefault&) = delete;

    /// [main-thread] What a run that was killed has left, or what was written; nothing when the file is not held.
    std::optional<std::string> Read() const;
    /// [main-thread] Keeps `chosen` for the next run; an empty text: nothing was chosen.
    void Write(const std::string& chosen);
    /// [main-thread] It has been given back.
    void Forget();

  private:
    std::string path_;
    int descriptor_ = -1; ///< of the file, locked; negative without one
};

} // namespace vocafade::command
