// SPDX-License-Identifier: MIT
#include "base/critical_section.h"

namespace vocafade {

// cppcheck-suppress uninitMemberVar ; it has one member on each system
CCriticalSection::CCriticalSection() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    // A kernel without priority inheritance leaves the default protocol, which is still a correct lock.
    pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
    if (pthread_mutex_init(&mutex_, &attributes) != 0) {
        pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_NONE);
        pthread_mutex_init(&mutex_, &attributes);
    }
    pthread_mutexattr_destroy(&attributes);
}

CCriticalSection::~CCriticalSection() { pthread_mutex_destroy(&mutex_); }

void CCriticalSection::Lock() noexcept { pthread_mutex_lock(&mutex_); }

void CCriticalSection::Unlock() noexcept { pthread_mutex_unlock(&mutex_); }

} // namespace vocafade
