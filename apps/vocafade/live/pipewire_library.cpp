// SPDX-License-Identifier: MIT
#include "apps/vocafade/live/pipewire_library.h"

#include "apps/vocafade/shared/failures.h"

#include <dlfcn.h>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr const char* kName = "libpipewire-0.3.so.0";

template <typename Function>
void Find(void* library, Function& function, const char* name) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    if (function == nullptr) throw Failure(fmt::format("{} is too old: it has no {}", kName, name));
}

PipeWireLibrary Load() {
    // For good: its threads and its own plug-ins stay behind.
    void* library = ::dlopen(kName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw Failure(
            fmt::format("PipeWire's library is not installed ({}): 'vocafade live' needs a desktop whose "
                        "sound server is PipeWire. On Debian: apt install libpipewire-0.3-0",
                        kName));
    PipeWireLibrary found{};
    Find(library, found.init, "pw_init");
    Find(library, found.thread_loop_new, "pw_thread_loop_new");
    Find(library, found.thread_loop_destroy, "pw_thread_loop_destroy");
    Find(library, found.thread_loop_start, "pw_thread_loop_start");
    Find(library, found.thread_loop_stop, "pw_thread_loop_stop");
    Find(library, found.thread_loop_lock, "pw_thread_loop_lock");
    Find(library, found.thread_loop_unlock, "pw_thread_loop_unlock");
    Find(library, found.thread_loop_get_loop, "pw_thread_loop_get_loop");
    Find(library, found.context_new, "pw_context_new");
    Find(library, found.context_destroy, "pw_context_destroy");
    Find(library, found.context_connect, "pw_context_connect");
    Find(library, found.core_disconnect, "pw_core_disconnect");
    Find(library, found.proxy_destroy, "pw_proxy_destroy");
    Find(library, found.properties_new_dict, "pw_properties_new_dict");
    Find(library, found.stream_new, "pw_stream_new");
    Find(library, found.stream_destroy, "pw_stream_destroy");
    Find(library, found.stream_add_listener, "pw_stream_add_listener");
    Find(library, found.stream_connect, "pw_stream_connect");
    Find(library, found.stream_get_node_id, "pw_stream_get_node_id");
    Find(library, found.stream_update_params, "pw_stream_update_params");
    Find(library, found.stream_dequeue_buffer, "pw_stream_dequeue_buffer");
    Find(library, found.stream_queue_buffer, "pw_stream_queue_buffer");
    Find(library, found.stream_trigger_process, "pw_stream_trigger_process");
    found.init(nullptr, nullptr);
    return found;
}

} // namespace

const PipeWireLibrary& PipeWireLibrary::Get() {
    static const PipeWireLibrary library = Load();
    return library;
}

} // namespace vocafade::command
