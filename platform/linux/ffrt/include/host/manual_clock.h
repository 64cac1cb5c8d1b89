// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_MANUAL_CLOCK_H
#define HOST_MANUAL_CLOCK_H

#include <chrono>
#include <cstddef>

namespace Host {
/// The time that FFRT lives by: the steady clock plus an offset, or the hand of the manual clock. It never goes back and
/// never jumps, also not when a manual clock comes or goes. Any thread.
std::chrono::steady_clock::time_point MonotonicNow();

/// While one exists, the FFRT sleeps, timed waits (condition_variable, future), delayed tasks and timers of this process
/// follow it instead of the real clock. Made and destroyed by a test; a second one at the same time ends the process
/// with a message, because two tests would move each other's time.
///
/// What is pending when a clock is made or destroyed goes on with the time it has left: on creation time stands still
/// from there on, on destruction it runs on from where the manual clock stood. wait_until measures what is left on the
/// clock of its argument when it begins, and waits for that long on this clock.
/// Waits of other kinds (std primitives, IPC, file descriptors) know nothing of it.
class ManualClock {
public:
    /// `patience`: the real time that Advance grants to tasks that are blocked outside FFRT, see there.
    explicit ManualClock(std::chrono::milliseconds patience = std::chrono::seconds(1));
    ~ManualClock();
    ManualClock(const ManualClock &) = delete;
    ManualClock &operator=(const ManualClock &) = delete;

    /// As MonotonicNow.
    std::chrono::steady_clock::time_point Now() const;

    /// Moves the time on by `duration` and returns when everything that became due has run. Due moments are visited one
    /// by one in their order, and the clock stands at each until all is quiet; so a repeating timer that is due several
    /// times runs several times, and what a woken task starts or waits for takes part. It begins by waiting for quiet,
    /// so that a task just submitted reaches its first wait before the time moves. Zero or less only waits for quiet.
    ///
    /// Quiet means: every task and ffrt::thread has ended or is blocked in FFRT (mutex, condition, future, sleep, wait,
    /// join, timer stop), and none is waiting to start. A task that calls Advance itself does not count. Threads that
    /// FFRT did not start are woken, but how far they have come afterwards is not known here.
    ///
    /// A task that is blocked elsewhere (an IPC call, a standard lock, a read) or computes for long is waited for while
    /// FFRT makes progress, but no longer than `patience` of real time without any, and ten times that in all, for each
    /// due moment. Then it is left behind: nobody waits for it again until it next blocks in FFRT or ends. So Advance
    /// always returns, unless timers and sleeps of no length fill a moment without end.
    ///
    /// Any thread may call it, also holding locks; calls take turns. Never in a function that the clock destroys.
    void Advance(std::chrono::nanoseconds duration);

    /// Waits, in real time and at most for `timeLimit`, until at least `count` sleeps, timed waits, delayed tasks and
    /// armed timers are pending. For threads that FFRT did not start: Advance does not know when they have begun to wait.
    bool WaitForPending(std::size_t count, std::chrono::milliseconds timeLimit) const;

private:
    const std::chrono::milliseconds patience_;
    bool advancing_ = false;
};
} // namespace Host

#endif
