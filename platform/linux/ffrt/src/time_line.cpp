// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "time_line.h"

#include <pthread.h>

#include <algorithm>
#include <system_error>
#include <thread>

#include "core.h"

namespace Host::Ffrt {
namespace {
// What is further away counts as never, which leaves room for every sum of moments and offsets.
constexpr std::chrono::hours LONGEST(24 * 365 * 100);
} // namespace

bool TimeLine::Earlier::operator()(const TimedEntry *left, const TimedEntry *right) const
{
    return left->due_ != right->due_ ? left->due_ < right->due_ : left->order_ < right->order_;
}

Moment TimeLine::Now() const
{
    return manual_ ? hand_ : std::chrono::steady_clock::now() + offset_;
}

Moment TimeLine::After(int64_t nanoseconds) const
{
    const std::chrono::nanoseconds length(nanoseconds);
    return length >= LONGEST ? Moment::max() : Now() + length;
}

void TimeLine::Add(TimedEntry &entry, Moment due)
{
    if (due <= Now()) {
        entry.OnDue();
        return;
    }
    if (due == Moment::max()) {
        return;
    }
    entry.due_ = due;
    entry.order_ = nextOrder_++;
    entry.queued_ = true;
    entries_.insert(&entry);
    added_.notify_all();
    EnsureThread();
    if (!manual_) {
        LookAgainAt(due - offset_);
    }
}

void TimeLine::Remove(TimedEntry &entry)
{
    if (entry.queued_) {
        entries_.erase(&entry);
        entry.queued_ = false;
    }
}

void TimeLine::LookAgainAt(Moment moment)
{
    EnsureThread();
    if (moment < sleepsUntil_) {
        sleepsUntil_ = moment;
        lookAgain_.notify_one();
    }
}

bool TimeLine::IsManual() const
{
    return manual_;
}

void TimeLine::BeginManual()
{
    hand_ = Now();
    manual_ = true;
}

void TimeLine::EndManual()
{
    offset_ = hand_ - std::chrono::steady_clock::now();
    manual_ = false;
    LookAgainAt(Moment::min());
}

bool TimeLine::StepTowards(Moment limit)
{
    if (entries_.empty() || (*entries_.begin())->due_ > limit) {
        hand_ = std::max(hand_, limit);
        return false;
    }
    hand_ = std::max(hand_, (*entries_.begin())->due_);
    FireUntil(hand_);
    return true;
}

std::size_t TimeLine::Pending() const
{
    return entries_.size();
}

bool TimeLine::WaitForPending(CoreLock &lock, std::size_t count, Moment realLimit)
{
    return added_.wait_until(lock, realLimit, [this, count]() { return entries_.size() >= count; });
}

void TimeLine::FireUntil(Moment now)
{
    while (!entries_.empty() && (*entries_.begin())->due_ <= now) {
        TimedEntry *entry = *entries_.begin();
        entries_.erase(entries_.begin());
        entry->queued_ = false;
        entry->OnDue();
    }
}

void TimeLine::EnsureThread()
{
    if (threadStarted_) {
        return;
    }
    try {
        std::thread(&TimeLine::Run, this).detach();
        threadStarted_ = true;
    } catch (const std::system_error &) {
        // Out of threads: the next entry tries again. Nothing is lost but time.
    }
}

void TimeLine::Run()
{
    pthread_setname_np(pthread_self(), "ffrt_time");
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    for (;;) {
        if (!manual_) {
            FireUntil(Now());
        }
        Moment next = core.pool.Reinforce();
        if (!manual_ && !entries_.empty()) {
            next = std::min(next, (*entries_.begin())->due_ - offset_);
        }
        sleepsUntil_ = next;
        // Not until(Moment::max()): the conversion inside would overflow.
        if (next == Moment::max()) {
            lookAgain_.wait(lock);
        } else {
            lookAgain_.wait_until(lock, next);
        }
    }
}
} // namespace Host::Ffrt
