// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/terminal.h"

#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vocafade::command {

bool HasStatusLine() {
    const char* kind =
        std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): nothing here changes the environment
    return ::isatty(STDERR_FILENO) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

std::size_t StatusWidth() {
    constexpr std::size_t kUsualWidth = 80;
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

} // namespace vocafade::command
