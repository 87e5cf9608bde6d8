// SPDX-License-Identifier: MIT
#include "tests/command/command_fixture.h"

#include <cstdlib>
#include <fcntl.h>
#include <pty.h>
#include <sndfile.hh>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::command {
namespace fs = std::filesystem;

CommandTest::CommandTest() {
    fs::create_directories(folder_);
    fs::create_directories(preferences_);
}

pid_t CommandTest::Start(const Words& arguments, const RunLimits& limits, int terminal) {
    const std::string out = root_ / "out";
    const std::string err = root_ / "err";
    const pid_t process = ::fork();
    if (process != 0) return process;
    test::SetVariable("HOME", root_.path());
    test::SetVariable("XDG_CONFIG_HOME", preferences_);
    test::SetVariable("TERM", "xterm");
    test::UnsetVariable("VST_PATH");
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
    ::dup2(terminal >= 0 ? terminal : ::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
    if (limits.fileBytes >= 0) {
        const rlimit limit{static_cast<rlim_t>(limits.fileBytes), static_cast<rlim_t>(limits.fileBytes)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    constexpr unsigned long dacOverride = 1; // root's right to write where nobody may
    if (limits.obeysPermissions && ::geteuid() == 0) ::prctl(PR_CAPBSET_DROP, dacOverride, 0, 0, 0);
    std::vector<char*> list{const_cast<char*>(VOCAFADE_COMMAND)};
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    if (::chdir(folder_.c_str()) == 0) ::execv(list.front(), list.data());
    std::_Exit(127);
}

RunResult CommandTest::Finish(pid_t process) {
    int status = 0;
    rusage usage{};
    ::wait4(process, &status, 0, &usage);
    RunResult result;
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    result.memoryBytes = usage.ru_maxrss * 1024;
    result.out = Content(root_ / "out");
    result.err = Content(root_ / "err");
    return result;
}

RunResult CommandTest::Run(const Words& arguments, const RunLimits& limits) {
    if (!limits.onTerminal) return Finish(Start(arguments, limits));
    int master = -1;
    int terminal = -1;
    EXPECT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
    const pid_t process = Start(arguments, limits, terminal);
    ::close(terminal);
    std::string seen;
    char buffer[512];
    for (ssize_t got = 0; (got = ::read(master, buffer, sizeof buffer)) > 0;)
        seen.append(buffer, static_cast<std::size_t>(got));
    ::close(master);
    RunResult result = Finish(process);
    result.err = seen;
    return result;
}

RunResult CommandTest::Fails(const Words& arguments, int exitCode, const std::string& reason,
                             const RunLimits& limits) {
    RunResult run = Run(arguments, limits);
    EXPECT_EQ(run.exitCode, exitCode) << testing::PrintToString(arguments) << run.err;
    ExpectParts(run.err, {reason});
    return run;
}

RunResult CommandTest::Succeeds(const Words& arguments, const Words& parts) {
    RunResult run = Run(arguments);
    EXPECT_EQ(run.exitCode, 0) << testing::PrintToString(arguments) << run.err;
    ExpectParts(run.out, parts);
    return run;
}

void ExpectParts(const std::string& text, const Words& parts) {
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

std::string CommandTest::Write(const std::string& name, int format, const std::vector<float>& samples,
                               int rate, int channels) {
    SndfileHandle sound(At(name).string(), SFM_WRITE, format, channels, rate);
    EXPECT_EQ(sound.error(), 0) << name << ": " << sound.strError();
    sound.command(SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sound.setString(SF_STR_TITLE, "The Title");
    sound.setString(SF_STR_ARTIST, "The Artist");
    sound.write(samples.data(), static_cast<sf_count_t>(samples.size()));
    return name;
}

Song CommandTest::Read(const std::string& name) const {
    SndfileHandle sound(At(name).string());
    EXPECT_EQ(sound.error(), 0) << name << ": " << sound.strError();
    std::vector<float> samples(static_cast<std::size_t>(sound.frames() * sound.channels()));
    EXPECT_EQ(sound.readf(samples.data(), sound.frames()), sound.frames()) << name;
    std::string texts;
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
        if (const char* text = sound.getString(kind)) texts += std::to_string(kind) + text + "\n";
    return {samples, sound.format(), sound.samplerate(), texts};
}

std::string CommandTest::WriteLongSong(const std::string& name, int seconds) {
    SndfileHandle sound(At(name).string(), SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 2, 44100);
    const float last[] = {0.0f, 0.0f}; // what is in front of it is a hole
    sound.seek(std::int64_t{44100} * seconds - 1, SEEK_SET);
    EXPECT_EQ(sound.writef(last, 1), 1) << sound.strError();
    return name;
}

} // namespace vocafade::command
