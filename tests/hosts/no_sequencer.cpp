// SPDX-License-Identifier: MIT
//
// Stands in for the kernel's MIDI sequencer (/dev/snd/seq), without which qtractor does not start its audio
// engine either, and which virtual machines and containers do not have. Preloaded: a sequencer that opens,
// has no ports but one's own, and never sends an event. Audio and plug-ins do not come by here.

#define VOCAFADE_STANDS_IN extern "C" __attribute__((visibility("default")))

namespace {
int handle;                      // its address is all that anyone needs
constexpr int kNothing = -11;    // -EAGAIN
constexpr int kNoSuchEntry = -2; // -ENOENT
} // namespace

VOCAFADE_STANDS_IN int snd_seq_open(void** sequencer, const char*, int, int) {
    *sequencer = &handle;
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
