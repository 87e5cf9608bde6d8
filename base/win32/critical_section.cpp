// SPDX-License-Identifier: MIT
#include "base/critical_section.h"

#include <new>
#include <windows.h>

namespace vocafade {
namespace {

/// Turns of waiting before a thread sleeps: what the lock guards takes a few instructions.
constexpr DWORD kTurns = 4000;

CRITICAL_SECTION* System(void* storage) { return static_cast<CRITICAL_SECTION*>(storage); }

} // namespace

// cppcheck-suppress uninitMemberVar ; it has one member on each system
CCriticalSection::CCriticalSection() {
    static_assert(sizeof section_ == sizeof(CRITICAL_SECTION) && alignof(void*) >= alignof(CRITICAL_SECTION));
    ::InitializeCriticalSectionAndSpinCount(new (section_) CRITICAL_SECTION, kTurns);
}

CCriticalSection::~CCriticalSection() { ::DeleteCriticalSection(System(section_)); }

void CCriticalSection::Lock() noexcept { ::EnterCriticalSection(System(section_)); }

void CCriticalSection::Unlock() noexcept { ::LeaveCriticalSection(System(section_)); }

} // namespace vocafade
