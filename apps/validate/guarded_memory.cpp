// SPDX-License-Identifier: MIT
#include "apps/validate/guarded_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace vocafade::validate {
namespace {

/// What a signal handler may read: plain records, claimed and given back by one atomic each.
struct Slot {
    std::atomic<bool> used;
    std::uintptr_t begin;
    std::uintptr_t end; ///< with both guard pages
    std::array<char, 80> what;
};
std::array<Slot, 1024> slots;
Notes* crashNotes = nullptr;

std::size_t PageBytes() {
    static const auto bytes = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return bytes;
}

std::size_t ClaimSlot() {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        bool free = false;
        if (slots[i].used.compare_exchange_strong(free, true)) return i;
    }
    throw std::bad_alloc();
}

/// Gathers a line without the heap.
class Line {
  public:
    void Add(std::string_view text) {
        const std::size_t count = std::min(text.size(), bytes_.size() - length_);
        std::memcpy(bytes_.data() + length_, text.data(), count);
        length_ += count;
    }
    std::string_view text() const { return {bytes_.data(), length_}; }

  private:
    std::array<char, 256> bytes_;
    std::size_t length_ = 0;
};

const char* NameOf(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV, invalid memory";
    case SIGBUS:
        return "SIGBUS, unreachable memory";
    case SIGFPE:
        return "SIGFPE, arithmetic";
    case SIGILL:
        return "SIGILL, invalid instruction";
    case SIGABRT:
        return "SIGABRT, aborted by itself";
    default:
        return "a signal";
    }
}

extern "C" void OnFatalSignal(int signal, siginfo_t* info, void*) {
    const auto touched = reinterpret_cast<std::uintptr_t>(info->si_addr);
    Line line;
    line.Add("Fcrashed (");
    line.Add(NameOf(signal));
    line.Add(")");
    for (const Slot& slot : slots) {
        if (signal != SIGSEGV || !slot.used || touched < slot.begin || touched >= slot.end) continue;
        line.Add(touched < slot.begin + PageBytes() ? ": it reached in front of " : ": it reached behind ");
        line.Add(slot.what.data());
    }
    line.Add("\n");
    crashNotes->Add(line.text());
    ::raise(signal); // now with the default action
}

} // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, Against against, std::string what) : slot_(ClaimSlot()) {
    const std::size_t page = PageBytes();
    const std::size_t inner = std::max<std::size_t>(1, (bytes + page - 1) / page) * page;
    mappedBytes_ = inner + 2 * page;
    // cppcheck-suppress invalidFunctionArg ; no file is mapped, which -1 says
    void* mapped = ::mmap(nullptr, mappedBytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED ||
        ::mprotect(static_cast<char*>(mapped) + page, inner, PROT_READ | PROT_WRITE) != 0) {
        slots[slot_].used = false;
        throw std::bad_alloc();
    }
    mapped_ = static_cast<char*>(mapped);
    data_ = mapped_ + page + (against == Against::end ? inner - bytes : 0);
    Slot& slot = slots[slot_];
    slot.begin = reinterpret_cast<std::uintptr_t>(mapped_);
    slot.end = slot.begin + mappedBytes_;
    what.resize(std::min(what.size(), slot.what.size() - 1));
    std::memcpy(slot.what.data(), what.c_str(), what.size() + 1);
}

GuardedMemory::~GuardedMemory() {
    ::munmap(mapped_, mappedBytes_);
    slots[slot_].used = false;
}

void InstallCrashReport(Notes& notes) {
    crashNotes = &notes;
    static std::array<char, 65536> stack; // a handler's own, for a plug-in that ran out of stack
    stack_t alternate{};
    alternate.ss_sp = stack.data();
    alternate.ss_size = stack.size();
    ::sigaltstack(&alternate, nullptr);
    struct sigaction action {};
    action.sa_sigaction = OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        ::sigaction(signal, &action, nullptr);
}

} // namespace vocafade::validate
