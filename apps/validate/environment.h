// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vocafade::validate {

/// What stands behind the program's name, in UTF-8.
std::vector<std::string> Arguments(int argumentCount, char** arguments);

/// The folder that this program lies in.
std::filesystem::path ProgramFolder();

/// A temporary folder that nobody else can enter; throws `std::runtime_error` when none can be made.
std::filesystem::path MakeOwnFolder();

/// From now on the environment names folders in this one in the place of the user's. While there is one thread.
void KeepSettingsIn(const std::filesystem::path& folder);

} // namespace vocafade::validate
