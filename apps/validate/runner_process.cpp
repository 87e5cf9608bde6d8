// SPDX-License-Identifier: MIT
#include "apps/validate/runner_process.h"

#include "apps/validate/protocol.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vocafade::validate {
namespace {

namespace fs = std::filesystem;
using command::Failure;
using Clock = std::chrono::steady_clock;

constexpr const char* kRunnerName = "vocafade-validate-runner";
constexpr int kHung = -1;
constexpr int kEndless = -2;
constexpr int kMostPatience = 6;          // times: how long a check goes on at most, however much it tries
constexpr std::size_t kMostOutput = 6000; // bytes of the plug-in's own words that are kept
#ifdef VOCAFADE_SANITIZED
constexpr int kPatience = 20; // times: the sanitizers are slow
#else
constexpr int kPatience = 1;
constexpr rlim_t kMostMemory = rlim_t{8} << 30; // a damaged state must not take the machine down
#endif

/// A descriptor that is closed at the end.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    void Set(int number) {
        Close();
        number_ = number;
    }
    void Close() {
        if (number_ >= 0) ::close(number_);
        number_ = -1;
    }

  private:
    int number_;
};

void MakePipe(Descriptor& reading, Descriptor& writing) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw Failure("no pipe can be made: the system has none left");
    reading.Set(ends[0]);
    writing.Set(ends[1]);
}

/// The memory that both processes see.
class SharedProgress {
  public:
    SharedProgress() : descriptor_(::memfd_create("vocafade-validate", MFD_CLOEXEC)) {
        if (descriptor_.get() < 0 || ::ftruncate(descriptor_.get(), sizeof(Progress)) != 0)
            throw Failure("no shared memory can be made");
        void* memory =
            ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_.get(), 0);
        if (memory == MAP_FAILED) throw Failure("no shared memory can be made");
        progress_ = static_cast<Progress*>(memory);
    }
    ~SharedProgress() { ::munmap(progress_, sizeof(Progress)); }
    SharedProgress(const SharedProgress&) = delete;
    SharedProgress& operator=(const SharedProgress&) = delete;
    int descriptor() const { return descriptor_.get(); }
    std::uint64_t attempts() const { return progress_->attempts; }
    std::string trying() const {
        const char* text = progress_->trying.data();
        return command::Printable({text, ::strnlen(text, progress_->trying.size())});
    }

  private:
    Descriptor descriptor_;
    Progress* progress_;
};

/// Becomes the runner; what is done between fork and exec is what may be done there.
[[noreturn]] void BecomeRunner(const char* runner, char** arguments, char** environment, int output,
                               int findings, int progress) {
    ::setpgid(0, 0); // so that what the plug-in starts ends with it
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
#ifndef VOCAFADE_SANITIZED
    const rlimit memory{kMostMemory, kMostMemory};
    ::setrlimit(RLIMIT_DATA, &memory);
#endif
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    // Above the numbers that they go to, so that neither overwrites the other.
    const int highFindings = ::fcntl(findings, F_DUPFD, 10);
    const int highProgress = ::fcntl(progress, F_DUPFD, 10);
    ::dup2(highFindings, kFindingsDescriptor);
    ::dup2(highProgress, kProgressDescriptor);
    ::close(highFindings);
    ::close(highProgress);
    ::execve(runner, arguments, environment);
    ::_exit(127);
}

/// What the runner needs to know of the user's surroundings, with folders of its own in place of theirs.
std::vector<std::string> Surroundings(const fs::path& home) {
    std::vector<std::string> surroundings;
    const std::string folders[] = {"HOME=", "XDG_CONFIG_HOME=", "XDG_DATA_HOME=", "XDG_CACHE_HOME="};
    bool hasAuthority = false;
    std::string oldHome;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        bool replaced = false;
        for (const std::string& folder : folders)
            replaced = replaced || text.starts_with(folder);
        if (text.starts_with("HOME=")) oldHome = text.substr(5);
        hasAuthority = hasAuthority || text.starts_with("XAUTHORITY=");
        if (!replaced) surroundings.push_back(text);
    }
    if (!hasAuthority && !oldHome.empty()) surroundings.push_back("XAUTHORITY=" + oldHome + "/.Xauthority");
    surroundings.push_back("HOME=" + home.string());
    surroundings.push_back("XDG_CONFIG_HOME=" + (home / "config").string());
    surroundings.push_back("XDG_DATA_HOME=" + (home / "data").string());
    surroundings.push_back("XDG_CACHE_HOME=" + (home / "cache").string());
    return surroundings;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// One run of the runner, from its start to its end.
class Child {
  public:
    Child(const fs::path& runner, std::vector<std::string> arguments, const fs::path& home) {
        Descriptor outputEnd;
        Descriptor findingsEnd;
        MakePipe(output_, outputEnd);
        MakePipe(findings_, findingsEnd);
        std::vector<std::string> surroundings = Surroundings(home);
        const std::vector<char*> variables = Pointers(surroundings);
        arguments.insert(arguments.begin(), runner.string());
        const std::vector<char*> words = Pointers(arguments);
        process_ = ::fork();
        if (process_ < 0) throw Failure("no process can be started");
        if (process_ == 0)
            BecomeRunner(runner.c_str(), const_cast<char**>(words.data()),
                         const_cast<char**>(variables.data()), outputEnd.get(), findingsEnd.get(),
                         progress_.descriptor());
        ::setpgid(process_, process_);
    }
    ~Child() {
        if (process_ > 0) End();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Reads what it says until it ends; answers its status, or `kHung` when it had tried nothing new for
    /// `seconds`, or `kEndless` when it went on and on, and was ended for that.
    int Wait(double seconds) {
        const auto patience =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        const auto end = Clock::now() + kMostPatience * patience;
        auto until = Clock::now() + patience;
        std::uint64_t attempts = progress_.attempts();
        int status = 0;
        while (true) {
            Read(20);
            if (::waitpid(process_, &status, WNOHANG) == process_) break;
            if (progress_.attempts() != attempts) {
                attempts = progress_.attempts();
                until = Clock::now() + patience;
            }
            if (Clock::now() < std::min(until, end)) continue;
            End();
            return Clock::now() < end ? kHung : kEndless;
        }
        ::kill(-process_, SIGKILL); // what it may have left behind
        process_ = -1;
        Read(0);
        return status;
    }
    const std::string& findings() const { return findingsText_; }
    const std::string& output() const { return outputText_; }
    const SharedProgress& progress() const { return progress_; }

  private:
    void End() {
        ::kill(-process_, SIGKILL);
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = -1;
        Read(0);
    }
    /// Takes what is there; waits at most `milliseconds` for the first of it.
    void Read(int milliseconds) {
        std::array<pollfd, 2> ends{pollfd{findings_.get(), POLLIN, 0}, pollfd{output_.get(), POLLIN, 0}};
        if (findings_.get() < 0 && output_.get() < 0) {
            ::usleep(static_cast<useconds_t>(milliseconds) * 1000);
            return;
        }
        while (::poll(ends.data(), ends.size(), milliseconds) > 0) {
            milliseconds = 0;
            Take(ends[0], findings_, findingsText_);
            Take(ends[1], output_, outputText_);
            if (outputText_.size() > 4 * kMostOutput) outputText_.erase(0, outputText_.size() - kMostOutput);
            if (ends[0].fd < 0 && ends[1].fd < 0) return;
        }
    }
    static void Take(pollfd& end, Descriptor& descriptor, std::string& text) {
        if (end.fd < 0 || (end.revents & (POLLIN | POLLHUP | POLLERR)) == 0) return;
        std::array<char, 4096> bytes;
        const ssize_t count = ::read(end.fd, bytes.data(), bytes.size());
        if (count > 0) {
            text.append(bytes.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            descriptor.Close();
            end.fd = -1;
        }
    }

    SharedProgress progress_;
    Descriptor output_;
    Descriptor findings_;
    std::string outputText_;
    std::string findingsText_;
    pid_t process_ = -1;
};

void Sort(const std::string& findings, Outcome& outcome) {
    std::istringstream lines(findings);
    for (std::string line; std::getline(lines, line);) {
        if (line.size() < 2) continue;
        const std::string sentence = command::Printable(line.substr(2));
        switch (line[0]) {
        case kFaultLetter:
            outcome.faults.push_back(sentence);
            break;
        case kRemarkLetter:
            outcome.remarks.push_back(sentence);
            break;
        case kSkippedLetter:
            outcome.skips.push_back(sentence);
            break;
        default:
            outcome.measures.push_back(sentence);
            break;
        }
    }
}

/// How a process ended that should not have, as a fault; the crash report, if there is one, becomes part of
/// it.
void AddEnding(int status, const std::string& trying, double seconds, Outcome& outcome) {
    const std::string when = trying.empty() ? std::string() : " while " + trying;
    if (status == kEndless) {
        outcome.skips.push_back(fmt::format("it is so slow that the check was given up{}", when));
    } else if (status == kHung) {
        outcome.faults.push_back(fmt::format("hung for {:.0f} seconds{}", seconds, when));
    } else if (WIFSIGNALED(status)) {
        std::string how = fmt::format("crashed (signal {})", WTERMSIG(status));
        if (!outcome.faults.empty() && outcome.faults.back().starts_with("crashed (")) {
            how = outcome.faults.back();
            outcome.faults.pop_back();
        }
        outcome.faults.push_back(how + when);
    } else if (WEXITSTATUS(status) == kRunnerUnusable) {
        outcome.unusable = true;
    } else if (WEXITSTATUS(status) != kRunnerDone) {
        outcome.faults.push_back(fmt::format("ended the process with {}{}", WEXITSTATUS(status), when));
    }
}

fs::path FindRunner() {
    std::error_code error;
    const fs::path beside = fs::read_symlink("/proc/self/exe", error).parent_path();
    for (const fs::path& folder : {beside, beside.parent_path() / VOCAFADE_INSTALL_LIBEXECDIR / "vocafade"})
        if (fs::is_regular_file(folder / kRunnerName, error)) return folder / kRunnerName;
    throw Failure(fmt::format("the program {} was not found beside the command", kRunnerName));
}

} // namespace

RunnerProcess::RunnerProcess() : runner_(FindRunner()) {
    std::string name = (fs::temp_directory_path() / "vocafade-validate-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw Failure("no temporary folder can be made");
    home_ = name;
}

RunnerProcess::~RunnerProcess() {
    std::error_code ignored;
    fs::remove_all(home_, ignored);
}

std::vector<CheckEntry> RunnerProcess::List() const {
    Child child(runner_, {"list"}, home_);
    if (child.Wait(30.0 * kPatience) != 0) throw Failure(fmt::format("{} does not work", runner_.string()));
    std::vector<CheckEntry> checks;
    std::istringstream lines(child.output());
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string level;
        std::string name;
        std::string seconds;
        std::string summary;
        std::getline(fields, level, '\t');
        std::getline(fields, name, '\t');
        std::getline(fields, seconds, '\t');
        std::getline(fields, summary);
        CheckEntry check{0, name, 0, summary};
        std::from_chars(level.data(), level.data() + level.size(), check.level);
        std::from_chars(seconds.data(), seconds.data() + seconds.size(), check.seconds);
        checks.push_back(check);
    }
    return checks;
}

Outcome RunnerProcess::Run(const CheckEntry& check, const fs::path& plugin, std::uint32_t seed,
                           bool twofold) const {
    const auto begin = Clock::now();
    Child child(runner_, {"run", check.name, std::to_string(seed), twofold ? "1" : "0", plugin.string()},
                home_);
    const double patience = check.seconds * kPatience;
    const int status = child.Wait(patience);
    Outcome outcome;
    Sort(child.findings(), outcome);
    AddEnding(status, child.progress().trying(), patience, outcome);
    outcome.attempts = child.progress().attempts();
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    outcome.output = child.output();
    if (outcome.output.size() > kMostOutput) outcome.output.erase(0, outcome.output.size() - kMostOutput);
    return outcome;
}

} // namespace vocafade::validate
