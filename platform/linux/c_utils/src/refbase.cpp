// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>

#include "refbase.h"

namespace OHOS {

bool RefCounter::IncStrong()
{
    // While the mark of a first reference is being taken off, the count is merely larger than it should be: no other
    // thread can see it reach zero, for this reference is in it.
    if (strong_.fetch_add(1, std::memory_order_relaxed) != NEVER_HELD) {
        return false;
    }
    strong_.fetch_sub(NEVER_HELD, std::memory_order_relaxed);
    return true;
}

bool RefCounter::DecStrong()
{
    return strong_.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

bool RefCounter::AttemptIncStrong(bool &first)
{
    int count = strong_.load(std::memory_order_relaxed);
    while (count != 0) {
        first = count == NEVER_HELD;
        if (strong_.compare_exchange_weak(count, first ? 1 : count + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

bool RefCounter::AttemptIncHeld()
{
    int count = strong_.load(std::memory_order_relaxed);
    while (count != 0 && count != NEVER_HELD) {
        if (strong_.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

void RefCounter::MarkGone()
{
    strong_.store(0, std::memory_order_release);
}

bool RefCounter::IsGone() const
{
    return strong_.load(std::memory_order_acquire) == 0;
}

void RefCounter::IncWeak()
{
    weak_.fetch_add(1, std::memory_order_relaxed);
    holders_.fetch_add(1, std::memory_order_relaxed);
}

void RefCounter::DecWeak()
{
    weak_.fetch_sub(1, std::memory_order_relaxed);
    Release();
}

void RefCounter::Release()
{
    if (holders_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

int RefCounter::StrongCount() const
{
    int count = strong_.load(std::memory_order_relaxed);
    return count >= NEVER_HELD ? count - NEVER_HELD : count;
}

int RefCounter::WeakCount() const
{
    return weak_.load(std::memory_order_relaxed) + StrongCount();
}

WeakRefCounter::WeakRefCounter(RefCounter *counter, void *cookie) : counter_(counter), cookie_(cookie)
{
    counter_->IncWeak();
}

WeakRefCounter::~WeakRefCounter()
{
    counter_->DecWeak();
}

void WeakRefCounter::IncWeakRefCount(const void *)
{
    holders_.fetch_add(1, std::memory_order_relaxed);
}

void WeakRefCounter::DecWeakRefCount(const void *)
{
    if (holders_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

bool WeakRefCounter::AttemptIncStrongRef(const void *, bool &first)
{
    return counter_->AttemptIncStrong(first);
}

RefBase::RefBase() : counter_(new RefCounter())
{}

RefBase::RefBase(const RefBase &) : RefBase()
{}

RefBase::RefBase(RefBase &&) noexcept : RefBase()
{}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned, each object keeps its own counts
RefBase &RefBase::operator=(const RefBase &) noexcept
{
    return *this;
}

RefBase::~RefBase()
{
    counter_->MarkGone();
    counter_->Release();
}

void RefBase::RefPtrCallback()
{
    delete this;
}

void RefBase::IncStrongRef(const void *objectId)
{
    if (counter_->IncStrong()) {
        OnFirstStrongRef(objectId);
    }
}

void RefBase::DecStrongRef(const void *objectId)
{
    if (counter_->DecStrong()) {
        OnLastStrongRef(objectId);
        RefPtrCallback();
    }
}

void RefBase::IncWeakRef(const void *)
{
    counter_->IncWeak();
}

void RefBase::DecWeakRef(const void *)
{
    counter_->DecWeak();
}

bool RefBase::AttemptIncStrongRef(const void *objectId)
{
    bool first = false;
    if (!counter_->AttemptIncStrong(first)) {
        return false;
    }
    if (first) {
        OnFirstStrongRef(objectId);
    }
    return true;
}

int RefBase::GetSptrRefCount()
{
    return counter_->StrongCount();
}

int RefBase::GetWptrRefCount()
{
    return counter_->WeakCount();
}

WeakRefCounter *RefBase::CreateWeakRef(void *cookie)
{
    return new WeakRefCounter(counter_, cookie);
}

void RefBase::OnFirstStrongRef(const void *)
{}

void RefBase::OnLastStrongRef(const void *)
{}

void RefBase::OnLastWeakRef(const void *)
{}

bool RefBase::OnAttemptPromoted(const void *)
{
    return true;
}

} // namespace OHOS
