// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/formants/formant_analysis.h"

#include <string>

namespace vocafade::command {

/// [main-thread] Draws the spectrum, both envelopes, the peaks and the band of an analysis over a logarithmic
/// axis of frequency as a PNG of 1280 x 720 pixels. Throws `Failure` when it cannot be written.
void DrawFormants(const FormantAnalysis& analysis, const std::string& title, const std::string& path);

} // namespace vocafade::command
