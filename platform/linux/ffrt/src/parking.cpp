// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "parking.h"

#include <cstdint>

#include "core.h"

namespace Host::Ffrt {
Waiter::Waiter(const void *key) : key_(key), worker_(WorkerPool::Current())
{}

void Waiter::OnDue()
{
    timedOut_ = true;
    GetCore().parking.Unlink(*this);
    Wake();
}

void Waiter::Wake()
{
    woken_ = true;
    // The waker counts the worker as active again, not the worker itself: in between all would seem quiet.
    if (counted_) {
        counted_ = false;
        GetCore().pool.OnResumed(*worker_);
    }
    signal_.notify_one();
}

ParkingLot::List &ParkingLot::ListOf(const void *key)
{
    const auto address = reinterpret_cast<std::uintptr_t>(key);
    return lists_[(address >> 4 ^ address >> 10) % lists_.size()];
}

bool ParkingLot::Park(CoreLock &lock, const void *key, Moment due)
{
    Waiter waiter(key);
    return Enter(waiter, due) && Block(lock, waiter);
}

bool ParkingLot::Enter(Waiter &waiter, Moment due)
{
    TimeLine &timeLine = GetCore().timeLine;
    if (due <= timeLine.Now()) {
        return false;
    }
    List &list = ListOf(waiter.key_);
    waiter.previous_ = list.last;
    (list.last == nullptr ? list.first : list.last->next_) = &waiter;
    list.last = &waiter;
    timeLine.Add(waiter, due);
    return true;
}

bool ParkingLot::Block(CoreLock &lock, Waiter &waiter)
{
    if (!waiter.woken_ && waiter.worker_ != nullptr) {
        waiter.counted_ = true;
        GetCore().pool.OnParked(*waiter.worker_);
    }
    waiter.signal_.wait(lock, [&waiter]() { return waiter.woken_; });
    return !waiter.timedOut_;
}

void ParkingLot::Unpark(const void *key, std::size_t count)
{
    Waiter *waiter = ListOf(key).first;
    while (waiter != nullptr && count > 0) {
        Waiter *following = waiter->next_;
        if (waiter->key_ == key) {
            GetCore().timeLine.Remove(*waiter);
            Unlink(*waiter);
            waiter->Wake();
            --count;
        }
        waiter = following;
    }
}

void ParkingLot::Unlink(Waiter &waiter)
{
    List &list = ListOf(waiter.key_);
    (waiter.previous_ == nullptr ? list.first : waiter.previous_->next_) = waiter.next_;
    (waiter.next_ == nullptr ? list.last : waiter.next_->previous_) = waiter.previous_;
}
} // namespace Host::Ffrt
