// SPDX-License-Identifier: MIT
#include "apps/validate/environment.h"

#include "base/path.h"
#include "base/win32/wide_text.h"

#include <cstdlib>
#include <random>
#include <stdexcept>
#include <windows.h>
// Behind it.
#include <shellapi.h>

namespace vocafade::validate {

namespace fs = std::filesystem;

std::vector<std::string> Arguments(int, char**) {
    int count = 0;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(win32::Narrow(wide[i]));
    ::LocalFree(wide);
    return arguments;
}

fs::path ProgramFolder() { return PathOf(FileOfThisCode()).parent_path(); }

fs::path MakeOwnFolder() {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path folder = fs::temp_directory_path() / ("vocafade-validate-" + std::to_string(random()));
        std::error_code error;
        if (fs::create_directory(folder, error)) return folder;
    }
    throw std::runtime_error("no temporary folder can be made");
}

void KeepSettingsIn(const fs::path& folder) {
    for (const wchar_t* name : {L"APPDATA", L"LOCALAPPDATA", L"USERPROFILE"})
        ::_wputenv_s(name, folder.c_str());
}

} // namespace vocafade::validate
