// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vocafade {

/// The plug-in's own bundle identifier.
inline constexpr char kBundleIdentifier[] = "jp.velmorax.vocafade";

/// [any-thread] The folder of the plug-in's resources, beside the shared object that holds this code, with a
/// "/" at its end; empty when the system does not say where that is.
std::string ResourceFolder();

/// [any-thread] The path of bitmap `id` under the alternative name "bmp%05d.png" in the bundle of that
/// identifier; nothing when there is no such file, or the bundle is not this one.
std::optional<std::string> getResourcePath(int id, const char* bundleIdentifier);

} // namespace vocafade
