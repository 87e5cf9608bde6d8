// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/render/options.h"
#include "apps/vocafade/render/render_plan.h"
#include "apps/vocafade/render/renderer.h"
#include "apps/vocafade/render/reporter.h"

namespace vocafade::command {

/// [main-thread] Renders and copies what `plan` says, several songs at once, and tells what becomes of each. A song
/// that fails stops no other. Answers an `ExitCode`; throws `Interrupted`, and `Failure` when the log cannot be
/// opened.
int RunSongs(const RenderPlan& plan, const RenderSettings& settings, const RenderOptions& options,
             Reporter& reporter);

} // namespace vocafade::command
