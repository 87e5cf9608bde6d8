// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::command {

/// [main-thread] From now on the first SIGINT, SIGTERM or SIGHUP only raises a flag, so that the run can
/// remove what it has half written; the second ends the process at once.
void WatchForInterruption();

/// [any-thread] Throws `Interrupted` when the flag is up.
void ThrowIfInterrupted();

/// [main-thread] Ends the process by the signal that was caught, so that whoever started it sees why it
/// ended. Returns when there was none.
void DieOfSignal();

} // namespace vocafade::command
