// SPDX-License-Identifier: MIT
//
// Stands in for what virtual machines and containers lack, preloaded: the machine's real-time clock (/dev/rtc), without
// which MusE ends at once, and the kernel's MIDI sequencer (/dev/snd/seq), without which qtractor does not start its
// audio engine either. The clock is a timer that gives the periodic ticks a program asks for; the sequencer opens, has
// no ports but one's own, and never sends an event. Audio and plug-ins do not come by here.

#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <linux/rtc.h>
#include <sys/timerfd.h>

#define VOCAFADE_STANDS_IN extern "C" __attribute__((visibility("default")))

namespace {

int timer = -1;
long ticksPerSecond = 1024;
int sequencerHandle;             // its address is all that anyone needs
constexpr int kNothing = -11;    // -EAGAIN
constexpr int kNoSuchEntry = -2; // -ENOENT

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

VOCAFADE_STANDS_IN int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    if (std::strcmp(path, "/dev/rtc") != 0)
        return Next<int(const char*, int, ...)>("open")(path, flags, mode);
    timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    return timer;
}

VOCAFADE_STANDS_IN int ioctl(int file, unsigned long request, ...) noexcept {
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

VOCAFADE_STANDS_IN int snd_seq_open(void** sequencer, const char*, int, int) {
    *sequencer = &sequencerHandle;
    return 0;
}
VOCAFADE_STANDS_IN int snd_seq_close(void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_client_id(void*) { return 128; }
VOCAFADE_STANDS_IN int snd_seq_set_client_name(void*, const char*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_create_simple_port(void*, const char*, unsigned, unsigned) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_delete_simple_port(void*, int) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_get_port_info(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_set_port_info(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_get_any_port_info(void*, int, int, void*) { return kNoSuchEntry; }
VOCAFADE_STANDS_IN int snd_seq_get_any_client_info(void*, int, void*) { return kNoSuchEntry; }
VOCAFADE_STANDS_IN int snd_seq_query_next_client(void*, void*) { return kNoSuchEntry; }
VOCAFADE_STANDS_IN int snd_seq_query_next_port(void*, void*) { return kNoSuchEntry; }
VOCAFADE_STANDS_IN int snd_seq_query_port_subscribers(void*, void*) { return kNoSuchEntry; }
VOCAFADE_STANDS_IN int snd_seq_subscribe_port(void*, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_unsubscribe_port(void*, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_alloc_queue(void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_free_queue(void*, int) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_control_queue(void*, int, int, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_get_queue_status(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_get_queue_tempo(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_set_queue_tempo(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_set_queue_timer(void*, int, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_poll_descriptors_count(void*, short) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_poll_descriptors(void*, void*, unsigned, short) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_event_input(void*, void**) { return kNothing; }
VOCAFADE_STANDS_IN int snd_seq_event_input_pending(void*, int) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_event_output(void*, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_event_output_direct(void*, void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_drain_output(void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_drop_input(void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_drop_output(void*) { return 0; }
VOCAFADE_STANDS_IN int snd_seq_remove_events(void*, void*) { return 0; }
