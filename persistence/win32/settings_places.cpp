// SPDX-License-Identifier: MIT
#include "persistence/settings_places.h"

#include "base/path.h"
#include "base/win32/patience.h"
#include "base/win32/wide_text.h"

#include <fcntl.h>
#include <io.h>
#include <iterator>
#include <shlobj.h>
#include <windows.h>

namespace vocafade {
namespace {

/// The folder that `variable` names, as the system set it or as somebody put it elsewhere, else the system's own.
std::string Folder(const wchar_t* variable, REFKNOWNFOLDERID known) {
    const std::filesystem::path named = PathOf(win32::Variable(variable));
    if (named.is_absolute()) return TextOf(named);
    wchar_t* path = nullptr;
    const bool found = ::SHGetKnownFolderPath(known, 0, nullptr, &path) == S_OK;
    std::string folder = found ? TextOf(path) : std::string();
    ::CoTaskMemFree(path);
    return folder;
}

} // namespace

std::string FindConfigurationFolder() { return Folder(L"APPDATA", FOLDERID_RoamingAppData); }

std::string SystemConfigurationFolder() { return Folder(L"ProgramData", FOLDERID_ProgramData); }

std::string NameOfMachine() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD length = std::size(name);
    return ::GetComputerNameW(name, &length) != 0 ? win32::Narrow({name, length}) : "localhost";
}

std::optional<std::string> CurrentApplication() {
    std::wstring file(32768, L'\0');
    file.resize(::GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    const std::string name = TextOf(std::filesystem::path(file).filename());
    if (name.empty()) return std::nullopt;
    return name;
}

bool HoldLock(CFile& file, const std::string& path) {
    HANDLE lock = INVALID_HANDLE_VALUE;
    win32::BePatient(1000, [&] {
        lock = ::CreateFileW(PathOf(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                             nullptr);
        return lock != INVALID_HANDLE_VALUE;
    });
    if (lock == INVALID_HANDLE_VALUE) return win32::FailWithErrno();
    return file.Attach(::_open_osfhandle(reinterpret_cast<std::intptr_t>(lock), _O_BINARY),
                       CFile::modeRead) &&
           file.Lock();
}

} // namespace vocafade
