// SPDX-License-Identifier: MIT
#include "apps/validate/guarded_memory.h"

#include "apps/validate/guard_pages.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace vocafade::validate {
namespace {

/// What may be read in the middle of a crash: plain records, claimed and given back by one atomic each.
struct Slot {
    std::atomic<bool> used;
    std::uintptr_t begin;
    std::uintptr_t end; ///< with both guard pages
    std::array<char, 80> what;
};
std::array<Slot, 1024> slots;

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

} // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, Against against, std::string what) : slot_(ClaimSlot()) {
    const std::size_t page = PageBytes();
    const std::size_t inner = std::max<std::size_t>(1, (bytes + page - 1) / page) * page;
    mappedBytes_ = inner + 2 * page;
    mapped_ = MapBetweenGuards(mappedBytes_);
    if (mapped_ == nullptr) {
        slots[slot_].used = false;
        throw std::bad_alloc();
    }
    data_ = mapped_ + page + (against == Against::end ? inner - bytes : 0);
    Slot& slot = slots[slot_];
    slot.begin = reinterpret_cast<std::uintptr_t>(mapped_);
    slot.end = slot.begin + mappedBytes_;
    what.resize(std::min(what.size(), slot.what.size() - 1));
    std::memcpy(slot.what.data(), what.c_str(), what.size() + 1);
}

GuardedMemory::~GuardedMemory() {
    Unmap(mapped_, mappedBytes_);
    slots[slot_].used = false;
}

void AddCrash(Notes& notes, std::string_view how, std::uintptr_t touched) {
    Line line;
    line.Add("Fcrashed (");
    line.Add(how);
    line.Add(")");
    for (const Slot& slot : slots) {
        if (!slot.used || touched < slot.begin || touched >= slot.end) continue;
        line.Add(touched < slot.begin + PageBytes() ? ": it reached in front of " : ": it reached behind ");
        line.Add(slot.what.data());
    }
    line.Add("\n");
    notes.Add(line.text());
}

} // namespace vocafade::validate
