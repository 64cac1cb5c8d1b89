// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_PARKING_H
#define HOST_FFRT_PARKING_H

#include <array>
#include <condition_variable>
#include <cstddef>
#include <limits>

#include "time_line.h"

namespace Host::Ffrt {
struct Worker;

// One blocked thread; lives on its stack while it is parked.
class Waiter : public TimedEntry {
public:
    explicit Waiter(const void *key);
    void OnDue() override;

private:
    friend class ParkingLot;
    void Wake();

    const void *key_;
    Waiter *previous_ = nullptr;
    Waiter *next_ = nullptr;
    Worker *worker_;
    bool counted_ = false;
    bool woken_ = false;
    bool timedOut_ = false;
    std::condition_variable signal_;
};

// Where threads wait. What they wait for is known by its address alone and never touched, so that it may be destroyed
// as soon as the last waiter has been told. All members are called under the core lock.
class ParkingLot {
public:
    static constexpr std::size_t everybody = std::numeric_limits<std::size_t>::max();

    // Blocks until Unpark(key) or until `due`; false in the latter case, at once if it has passed. Gives `lock` back
    // meanwhile.
    bool Park(CoreLock &lock, const void *key, Moment due = Moment::max());
    // The same, and calls `release` without the lock when this thread can already be woken. `release` is not called if
    // `due` has passed.
    template <typename Release>
    bool Park(CoreLock &lock, const void *key, Moment due, Release &&release)
    {
        Waiter waiter(key);
        if (!Enter(waiter, due)) {
            return false;
        }
        lock.unlock();
        release();
        lock.lock();
        return Block(lock, waiter);
    }

    // Wakes at most `count` of those who wait for `key`, the longest waiting first.
    void Unpark(const void *key, std::size_t count);

private:
    friend class Waiter;
    struct List {
        Waiter *first = nullptr;
        Waiter *last = nullptr;
    };

    List &ListOf(const void *key);
    bool Enter(Waiter &waiter, Moment due);
    bool Block(CoreLock &lock, Waiter &waiter);
    void Unlink(Waiter &waiter);

    std::array<List, 64> lists_;
};
} // namespace Host::Ffrt

#endif
