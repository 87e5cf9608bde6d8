// SPDX-License-Identifier: MIT
#include "apps/validate/process_traits.h"

#include <clocale>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocafade::validate {

std::vector<ProcessTrait> ReadProcessTraits() {
    std::vector<ProcessTrait> traits;
    for (int signal = 1; signal < 65; ++signal) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        traits.push_back({fmt::format("signal {} has another handler", signal),
                          fmt::format("{}", reinterpret_cast<const void*>(action.sa_sigaction))});
    }
    sigset_t blocked{};
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    std::string signals;
    for (int signal = 1; signal < 65; ++signal)
        signals += ::sigismember(&blocked, signal) == 1 ? '1' : '0';
    traits.push_back({"other signals are blocked", signals});
    const std::string locale = std::setlocale(LC_ALL, nullptr); // NOLINT(concurrency-mt-unsafe): it only asks
    traits.push_back({"the locale is " + locale, locale});
    std::error_code error;
    const std::string folder = std::filesystem::current_path(error).string();
    traits.push_back({"the current folder is " + folder, folder});
    const mode_t mask = ::umask(0);
    ::umask(mask);
    traits.push_back({"new files get other permissions", std::to_string(mask)});
    std::string environment;
    for (char** variable = environ; *variable != nullptr; ++variable)
        environment += std::string(*variable) + '\n';
    traits.push_back({"the environment has changed", environment});
    return traits;
}

} // namespace vocafade::validate
