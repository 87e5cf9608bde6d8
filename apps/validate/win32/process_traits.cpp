// SPDX-License-Identifier: MIT
#include "apps/validate/process_traits.h"

#include "base/win32/wide_text.h"

#include <clocale>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <windows.h>

namespace vocafade::validate {

std::vector<ProcessTrait> ReadProcessTraits() {
    std::vector<ProcessTrait> traits;
    const auto handler = [](auto* function) {
        return fmt::format("{}", reinterpret_cast<const void*>(function));
    };
    // These can only be asked for by exchanging them.
    for (const int signal : {SIGINT, SIGILL, SIGFPE, SIGSEGV, SIGTERM, SIGABRT}) {
        const auto now = std::signal(signal, SIG_DFL);
        std::signal(signal, now);
        traits.push_back({fmt::format("signal {} has another handler", signal), handler(now)});
    }
    const auto filter = ::SetUnhandledExceptionFilter(nullptr);
    ::SetUnhandledExceptionFilter(filter);
    traits.push_back({"crashes have another handler", handler(filter)});
    traits.push_back(
        {"the system shows other boxes for errors", std::to_string(static_cast<unsigned>(::GetErrorMode()))});
    wchar_t folder[MAX_PATH + 1] = L"";
    ::GetDllDirectoryW(MAX_PATH, folder);
    traits.push_back({"DLLs are searched elsewhere", win32::Narrow(folder)});
    traits.push_back(
        {"the process has another priority", std::to_string(::GetPriorityClass(::GetCurrentProcess()))});
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    traits.push_back({"the locale is " + locale, locale});
    std::error_code error;
    const std::string current = win32::Narrow(std::filesystem::current_path(error).native());
    traits.push_back({"the current folder is " + current, current});
    wchar_t* const variables = ::GetEnvironmentStringsW();
    const wchar_t* end = variables;
    while (*end != 0)
        end += ::wcslen(end) + 1;
    traits.push_back({"the environment has changed",
                      win32::Narrow({variables, static_cast<std::size_t>(end - variables)})});
    ::FreeEnvironmentStringsW(variables);
    return traits;
}

} // namespace vocafade::validate
