// SPDX-License-Identifier: MIT
#include "apps/demo/run_program.h"

#include <cerrno>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vocafade {

void RunProgram(const std::vector<std::string>& arguments) {
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers;
    pointers.reserve(copies.size() + 1);
    for (std::string& argument : copies)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    pid_t child = 0;
    const int error = posix_spawn(&child, pointers[0], nullptr, nullptr, pointers.data(), environ);
    if (error != 0)
        throw std::runtime_error(arguments[0] +
                                 ": cannot be started: " + std::generic_category().message(error));
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) throw std::runtime_error(arguments[0] + ": was lost");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(arguments[0] + " has failed");
}

} // namespace vocafade
