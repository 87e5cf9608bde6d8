// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/printing.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace vocafade::command {
namespace {

std::atomic<int> outputError{0};         // the first at writing to the standard output
std::atomic<std::FILE*> errors{nullptr}; // where to instead of the standard error

void NoteOutputError(bool taken) {
    if (taken) return;
    int none = 0;
    outputError.compare_exchange_strong(none, errno != 0 ? errno : EIO);
}

} // namespace

void PrepareStreams() {
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::dup(descriptor);
    if (descriptor >= 0) ::close(descriptor);
    struct sigaction action {};
    // Not SIG_IGN, which programs started from here would inherit.
    action.sa_handler = [](int) {};
    action.sa_flags = static_cast<int>(SA_RESTART);
    ::sigaction(SIGPIPE, &action, nullptr);
}

void PrintText(std::string_view text) {
    errno = 0;
    NoteOutputError(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
}

void FlushOutput() {
    errno = 0;
    NoteOutputError(std::fflush(stdout) == 0);
}

void PrintError(std::string_view text) {
    std::FILE* instead = errors;
    std::FILE* stream = instead != nullptr ? instead : stderr;
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

int FinishOutput() {
    FlushOutput();
    return outputError == EPIPE ? 0 : outputError.load();
}

LibrarySilence::LibrarySilence() {
    const int own = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::FILE* stream = own >= 0 && nowhere >= 0 ? ::fdopen(own, "w") : nullptr;
    if (stream != nullptr) {
        errors = stream;
        ::dup2(nowhere, STDERR_FILENO);
    } else if (own >= 0) {
        ::close(own);
    }
    if (nowhere >= 0) ::close(nowhere);
}

LibrarySilence::~LibrarySilence() {
    std::FILE* stream = errors.exchange(nullptr);
    if (stream == nullptr) return;
    std::fflush(stderr);
    ::dup2(::fileno(stream), STDERR_FILENO);
    std::fclose(stream);
}

} // namespace vocafade::command
