// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <limits>
#include <mutex>

#include "cpp/condition_variable.h"

#include "core.h"

namespace {
using Host::Ffrt::CoreLock;
using Host::Ffrt::GetCore;
using Host::Ffrt::Moment;
using Host::Ffrt::ParkingLot;

// False when the time has passed.
bool WaitOnce(std::unique_lock<ffrt::mutex> &lk, const void *condition, Moment due)
{
    bool released = false;
    bool notified = false;
    {
        CoreLock lock(GetCore().mutex);
        notified = GetCore().parking.Park(lock, condition, due, [&lk, &released]() {
            lk.unlock();
            released = true;
        });
    }
    if (!released) {
        // The time had passed before: others get their turn even so, or a loop of very short waits would keep them out.
        lk.unlock();
    }
    lk.lock();
    return notified;
}

void Notify(const void *condition, std::size_t count)
{
    CoreLock lock(GetCore().mutex);
    GetCore().parking.Unpark(condition, count);
}
} // namespace

namespace ffrt {
condition_variable::condition_variable() : ffrt_cond_t{}
{}

void condition_variable::wait(std::unique_lock<mutex> &lk)
{
    WaitOnce(lk, this, Moment::max());
}

bool condition_variable::WaitFor(
    std::unique_lock<mutex> &lk, int64_t nanoseconds, bool (*predicate)(void *), void *argument) noexcept
{
    const auto holds = [predicate, argument]() { return predicate != nullptr && predicate(argument); };
    if (holds()) {
        return true;
    }
    if (nanoseconds <= 0) {
        return false;
    }
    Moment due;
    {
        CoreLock lock(GetCore().mutex);
        due = GetCore().timeLine.After(nanoseconds);
    }
    bool notified = true;
    do {
        notified = WaitOnce(lk, this, due);
        if (holds()) {
            return true;
        }
    } while (predicate != nullptr && notified);
    return notified;
}

void condition_variable::notify_one() noexcept
{
    Notify(this, 1);
}

void condition_variable::notify_all() noexcept
{
    Notify(this, ParkingLot::everybody);
}
} // namespace ffrt
