// SPDX-License-Identifier: MIT
#include "apps/vocafade/open/open_command.h"

#include "apps/vocafade/live/live_command.h"
#include "apps/vocafade/play/play_command.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/subcommand_line.h"

#include <csignal>
#include <exception>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vocafade::command {
namespace {

/// Runs a subcommand as if these words had been typed.
int RunWords(int (*run)(int, char**), std::vector<std::string> words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return run(static_cast<int>(words.size()), arguments.data());
}

void Notify(std::string sentence) {
    std::string words[] = {"notify-send", "--icon=jp.velmorax.vocafade", "--", "Vocafade",
                           std::move(sentence)};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                         words[3].data(), words[4].data(), nullptr};
    pid_t process = 0;
    if (::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments, ::environ) == 0)
        ::waitpid(process, nullptr, 0);
}

} // namespace

int RunOpen(int argumentCount, char** arguments) {
    std::vector<std::string> songs;
    CLI::App app(
        "Plays songs without their lead voice; without songs, takes the voice out of all that the desktop\n"
        "plays. What the desktop's menu starts.",
        "vocafade open");
    app.add_option("SONG", songs, "stereo sound files, or folders of them");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    try {
        if (songs.empty()) return RunWords(RunLive, {"live", "--default"});
        std::vector<std::string> words = {"play", "--"};
        words.insert(words.end(), songs.begin(), songs.end());
        return RunWords(RunPlay, words);
    } catch (const Interrupted&) {
        throw;
    } catch (const std::exception& error) {
        if (::isatty(STDERR_FILENO) == 0) Notify(error.what());
        throw;
    }
}

} // namespace vocafade::command
