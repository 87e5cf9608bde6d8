// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade::platform::x11 {

/// [any-thread] Keeps the drawing libraries in the process until it ends. GObject registers types for good,
/// and Fontconfig, Pango and Cairo keep tables that they never give back: unloaded and loaded again with a
/// plug-in, they would leave those behind each time. To be called before they are used.
void KeepLibrariesResident();

} // namespace vocafade::platform::x11
