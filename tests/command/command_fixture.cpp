// SPDX-License-Identifier: MIT
#include "tests/command/command_fixture.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <pty.h>
#include <random>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

constexpr unsigned long kCapabilityDacOverride = 1; // root's right to write where nobody may

[[noreturn]] void Become(const Words& arguments, const RunLimits& limits) {
    if (limits.fileBytes >= 0) {
        const rlimit limit{static_cast<rlim_t>(limits.fileBytes), static_cast<rlim_t>(limits.fileBytes)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (limits.obeysPermissions && ::geteuid() == 0)
        ::prctl(PR_CAPBSET_DROP, kCapabilityDacOverride, 0, 0, 0);
    std::vector<char*> list{const_cast<char*>(VOCAFADE_COMMAND)};
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    ::execv(list.front(), list.data());
    ::_exit(127);
}

} // namespace

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
    if (::chdir(folder_.c_str()) != 0) ::_exit(126);
    Become(arguments, limits);
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

bool CommandTest::HasTerminals() {
    int master = -1;
    int terminal = -1;
    if (::openpty(&master, &terminal, nullptr, nullptr, nullptr) != 0) return false;
    ::close(master);
    ::close(terminal);
    return true;
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

void CommandTest::Fails(const Words& arguments, int exitCode, const std::string& reason,
                        const RunLimits& limits) {
    const RunResult run = Run(arguments, limits);
    EXPECT_EQ(run.exitCode, exitCode) << testing::PrintToString(arguments) << run.err;
    EXPECT_NE(run.err.find(reason), std::string::npos) << reason << "\n" << run.err;
}

std::string CommandTest::Write(const std::string& name, int format, const std::vector<float>& samples,
                               int rate, int channels) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* sound = sf_open(At(name).c_str(), SFM_WRITE, &info);
    EXPECT_NE(sound, nullptr) << name << ": " << sf_strerror(nullptr);
    if (sound == nullptr) return name;
    sf_command(sound, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sf_set_string(sound, SF_STR_TITLE, "The Title");
    sf_set_string(sound, SF_STR_ARTIST, "The Artist");
    sf_writef_float(sound, samples.data(), static_cast<sf_count_t>(samples.size()) / channels);
    sf_close(sound);
    return name;
}

Song CommandTest::Read(const std::string& name) const {
    Song song;
    SNDFILE* sound = sf_open(At(name).c_str(), SFM_READ, &song.info);
    EXPECT_NE(sound, nullptr) << name << ": " << sf_strerror(nullptr);
    if (sound == nullptr) return song;
    song.samples.resize(static_cast<std::size_t>(song.info.frames * song.info.channels));
    EXPECT_EQ(sf_readf_float(sound, song.samples.data(), song.info.frames), song.info.frames) << name;
    sf_close(sound);
    return song;
}

std::string CommandTest::WriteSilence(const std::string& name, int seconds) {
    Write(name, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, {0.0f, 0.0f});
    std::string header =
        Content(At(name)).substr(0, 44); // libsndfile's plain header: "data" and its size are last
    const std::uint32_t bytes = static_cast<std::uint32_t>(seconds) * 44100 * 2;
    const std::uint32_t riff = bytes + 36;
    std::memcpy(header.data() + 4, &riff, 4);
    header.replace(36, 4, "data");
    std::memcpy(header.data() + 40, &bytes, 4);
    std::ofstream(At(name), std::ios::binary) << header;
    fs::resize_file(At(name), 44 + std::uintmax_t{bytes});
    return name;
}

std::vector<float> Noise(std::int64_t frames, float level) {
    std::minstd_rand random(7);
    std::vector<float> samples(static_cast<std::size_t>(frames) * 2);
    for (float& sample : samples)
        sample = level * (static_cast<float>(random() % 20001) / 10000.0f - 1.0f);
    return samples;
}

int BestLag(const Song& input, const Song& output, int reach) {
    int best = 0;
    double most = -1.0;
    const std::int64_t frames = std::min<std::int64_t>({input.frames(), output.frames(), 40000});
    for (int lag = -reach; lag <= reach; ++lag) {
        double sum = 0.0;
        for (std::int64_t i = reach; i < frames - reach; ++i)
            sum += static_cast<double>(input.samples[2 * i]) * output.samples[2 * (i + lag)];
        if (sum > most) {
            most = sum;
            best = lag;
        }
    }
    return best;
}

} // namespace vocafade::command
