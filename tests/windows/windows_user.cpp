// SPDX-License-Identifier: MIT
// Runs a Windows program under Wine on an X server of its own, and is the user's hands and eyes there:
//
//   windows_user PROGRAM [ARGUMENT...]
//
// A line that the program prints and that begins with kRequest asks for something; the answer is a line on its
// standard input. All other lines are passed on. Ends with the program's own result.
#include "tests/support/x_server.h"
#include "tests/support/x_user.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using vocafade::test::Picture;
using vocafade::test::XUser;

constexpr std::string_view kRequest = "\x01user ";

/// Writes the picture as its size and its pixels, to the file that the program reads it from.
void Leave(const Picture& picture, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&picture.width), sizeof picture.width);
    file.write(reinterpret_cast<const char*>(&picture.height), sizeof picture.height);
    file.write(reinterpret_cast<const char*>(picture.pixels.data()),
               static_cast<std::streamsize>(picture.pixels.size() * sizeof picture.pixels[0]));
}

void Do(XUser& user, std::istream& request, const std::string& look) {
    std::string verb;
    int numbers[4] = {};
    request >> verb;
    for (int& number : numbers)
        request >> number;
    const auto keysym = static_cast<xcb_keysym_t>(numbers[0]);
    if (verb == "move") user.MoveTo(numbers[0], numbers[1]);
    if (verb == "press") user.Press(numbers[0]);
    if (verb == "release") user.Release(numbers[0]);
    if (verb == "down") user.KeyDown(keysym);
    if (verb == "up") user.KeyUp(keysym);
    if (verb == "key") user.Key(keysym);
    if (verb == "add") user.AddKeys(std::vector<xcb_keysym_t>(numbers, numbers + 3));
    if (verb == "german") user.TakeGermanKeyboard();
    if (verb == "look") Leave(user.Look(user.Root(), numbers[0], numbers[1], numbers[2], numbers[3]), look);
    user.Sync();
}

/// Starts the program; answers its output. What is written to `input` is its standard input.
std::FILE* Start(char** arguments, int& input) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    ::dup2(ends[0], STDIN_FILENO); // which it inherits
    input = ends[1];
    std::string command = "exec setpriv --pdeathsig KILL";
    for (; *arguments != nullptr; ++arguments)
        command += std::string(" '") + *arguments + "'";
    return ::popen(command.c_str(), "r");
}

} // namespace

int main(int count, char** arguments) try {
    if (count < 2) return 2;
    std::signal(SIGPIPE, SIG_IGN); // the program may end without reading its last answer
    const vocafade::test::XServer server;
    XUser user;
    const std::string look = "/tmp/vocafade-look-" + std::to_string(::getpid());
    ::setenv("VOCAFADE_LOOK", look.c_str(), 1); // NOLINT(concurrency-mt-unsafe): one thread
    int toProgram = -1;
    std::FILE* output = Start(arguments + 1, toProgram);
    if (output == nullptr) throw std::runtime_error("no process");
    char* text = nullptr;
    std::size_t room = 0;
    while (::getline(&text, &room, output) > 0) {
        std::string line(text);
        std::erase_if(line, [](char c) { return c == '\r' || c == '\n'; });
        if (line.starts_with(kRequest)) {
            std::istringstream request(line.substr(kRequest.size()));
            Do(user, request, look);
            if (::write(toProgram, "\n", 1) != 1) break;
        } else if (!line.empty()) {
            std::cout << line << std::endl;
        }
    }
    std::free(text);
    std::remove(look.c_str());
    const int status = ::pclose(output);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
} catch (const std::exception& error) {
    std::cerr << "windows_user: " << error.what() << '\n';
    return 1;
}
