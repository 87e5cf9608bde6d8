// SPDX-License-Identifier: MIT
//
// Stands in for the machine's real-time clock (/dev/rtc), without which MusE ends at once, and which virtual
// machines and containers do not have. Preloaded: a timer that gives the periodic ticks a program asks for.

#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <linux/rtc.h>
#include <sys/timerfd.h>

namespace {

int timer = -1;
long ticksPerSecond = 1024;

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    if (std::strcmp(path, "/dev/rtc") != 0)
        return Next<int(const char*, int, ...)>("open")(path, flags, mode);
    timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    return timer;
}

extern "C" __attribute__((visibility("default"))) int ioctl(int file, unsigned long request, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, request);
    void* value = va_arg(arguments, void*);
    va_end(arguments);
    if (file < 0 || file != timer) return Next<int(int, unsigned long, ...)>("ioctl")(file, request, value);
    if (request == RTC_IRQP_SET) ticksPerSecond = reinterpret_cast<long>(value);
    if (request == RTC_IRQP_READ) *static_cast<long*>(value) = ticksPerSecond;
    if (request == RTC_PIE_ON || request == RTC_PIE_OFF) {
        const long period = request == RTC_PIE_ON ? 1'000'000'000 / ticksPerSecond : 0; // ns
        const itimerspec ticks{{0, period}, {0, period}};
        ::timerfd_settime(timer, 0, &ticks, nullptr);
    }
    return 0;
}
