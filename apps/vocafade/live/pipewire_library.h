// SPDX-License-Identifier: MIT
#pragma once

#include <pipewire/pipewire.h>

namespace vocafade::command {

/// PipeWire's library, which is looked for only when it is wanted, so that machines without it run everything else.
/// Its functions have their own names here, without "pw_".
struct PipeWireLibrary {
    /// [main-thread] Loads it, once. Throws `Failure` when it is not installed.
    static const PipeWireLibrary& Get();

    decltype(&::pw_init) init;
    decltype(&::pw_thread_loop_new) thread_loop_new;
    decltype(&::pw_thread_loop_destroy) thread_loop_destroy;
    decltype(&::pw_thread_loop_start) thread_loop_start;
    decltype(&::pw_thread_loop_stop) thread_loop_stop;
    decltype(&::pw_thread_loop_lock) thread_loop_lock;
    decltype(&::pw_thread_loop_unlock) thread_loop_unlock;
    decltype(&::pw_thread_loop_get_loop) thread_loop_get_loop;
    decltype(&::pw_context_new) context_new;
    decltype(&::pw_context_destroy) context_destroy;
    decltype(&::pw_context_connect) context_connect;
    decltype(&::pw_core_disconnect) core_disconnect;
    decltype(&::pw_proxy_destroy) proxy_destroy;
    decltype(&::pw_properties_new_dict) properties_new_dict;
    decltype(&::pw_stream_new) stream_new;
    decltype(&::pw_stream_destroy) stream_destroy;
    decltype(&::pw_stream_add_listener) stream_add_listener;
    decltype(&::pw_stream_connect) stream_connect;
    decltype(&::pw_stream_get_node_id) stream_get_node_id;
    decltype(&::pw_stream_update_params) stream_update_params;
    decltype(&::pw_stream_dequeue_buffer) stream_dequeue_buffer;
    decltype(&::pw_stream_queue_buffer) stream_queue_buffer;
    decltype(&::pw_stream_trigger_process) stream_trigger_process;
};

} // namespace vocafade::command
