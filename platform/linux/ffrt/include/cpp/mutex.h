// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_MUTEX_H
#define FFRT_CPP_MUTEX_H

#include <mutex>

#include "c/mutex.h"

namespace ffrt {
// May be held over any FFRT wait. Unlocked by the task or thread that locked it; locked twice by one of them it blocks
// for ever. Owned by the caller, who destroys it unlocked and with nobody waiting.
class mutex : public ffrt_mutex_t {
public:
    mutex();
    ~mutex();
    mutex(const mutex &) = delete;
    mutex &operator=(const mutex &) = delete;

    bool try_lock();
    void lock();
    void unlock();
};

// As mutex, but the task that holds it may lock it again; it is free after as many unlocks, by the same task.
class recursive_mutex : public ffrt_mutex_t {
public:
    recursive_mutex();
    ~recursive_mutex();
    recursive_mutex(const recursive_mutex &) = delete;
    recursive_mutex &operator=(const recursive_mutex &) = delete;

    bool try_lock();
    void lock();
    void unlock();
};
} // namespace ffrt

#endif
