// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_TIME_LINE_H
#define HOST_FFRT_TIME_LINE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <set>

namespace Host::Ffrt {
using Moment = std::chrono::steady_clock::time_point;
using CoreLock = std::unique_lock<std::mutex>;

// Something that happens at a moment. Owned by whoever adds it, who removes it before its end.
class TimedEntry {
public:
    TimedEntry() = default;
    TimedEntry(const TimedEntry &) = delete;
    TimedEntry &operator=(const TimedEntry &) = delete;
    virtual ~TimedEntry() = default;
    // Called under the core lock, once for each Add, when the entry is no longer in the time line. May destroy the
    // entry, must not block.
    virtual void OnDue() = 0;

private:
    friend class TimeLine;
    Moment due_;
    uint64_t order_ = 0;
    bool queued_ = false;
};

// The time of FFRT and what is to happen in it: the steady clock plus an offset, or, while a manual clock is there, a
// hand that only the manual clock moves. Continuous over both, so that due moments never have to be converted. All
// members are called under the core lock.
class TimeLine {
public:
    Moment Now() const;
    // The moment in so many nanoseconds; Moment::max(), which is never, if that is beyond a life time.
    Moment After(int64_t nanoseconds) const;

    // Entries of one moment become due in the order in which they were added. Already due: OnDue is called at once.
    // Never due: nothing is added.
    void Add(TimedEntry &entry, Moment due);
    // Nothing happens if it is not there.
    void Remove(TimedEntry &entry);

    // Makes the thread of the time line look again, at the latest at the real moment `moment`.
    void LookAgainAt(Moment moment);

    bool IsManual() const;
    void BeginManual();
    void EndManual();
    // Moves the hand to the first due moment that is not after `limit` and calls everything that is due then. False, with
    // the hand at `limit`, if there is none.
    bool StepTowards(Moment limit);

    std::size_t Pending() const;
    // Waits in real time; false if there are still fewer at the end.
    bool WaitForPending(CoreLock &lock, std::size_t count, Moment realLimit);

private:
    struct Earlier {
        bool operator()(const TimedEntry *left, const TimedEntry *right) const;
    };

    void Run();
    void EnsureThread();
    void FireUntil(Moment now);

    std::set<TimedEntry *, Earlier> entries_;
    uint64_t nextOrder_ = 0;
    std::chrono::nanoseconds offset_{0};
    bool manual_ = false;
    Moment hand_;
    bool threadStarted_ = false;
    Moment sleepsUntil_ = Moment::max();
    std::condition_variable lookAgain_;
    std::condition_variable added_;
};
} // namespace Host::Ffrt

#endif
