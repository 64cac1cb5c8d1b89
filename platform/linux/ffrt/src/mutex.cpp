// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>

#include "cpp/mutex.h"

#include "core.h"

namespace {
using Host::Ffrt::CoreLock;
using Host::Ffrt::GetCore;

constexpr uint32_t FREE = 0;
constexpr uint32_t LOCKED = 1;
constexpr uint32_t CONTENDED = 2; // locked, and perhaps somebody waits

struct MutexState {
    std::atomic<uint32_t> value{FREE};
    uint32_t depth = 0; // of a recursive one, only touched by the owner
    std::atomic<const void *> owner{nullptr};
};
static_assert(sizeof(MutexState) <= sizeof(ffrt_mutex_t) && alignof(MutexState) <= alignof(uint64_t),
    "the storage of ffrt_mutex_t is too small");

MutexState &StateIn(ffrt_mutex_t &storage)
{
    return *std::launder(reinterpret_cast<MutexState *>(storage.storage));
}

bool TryLock(MutexState &state)
{
    uint32_t expected = FREE;
    return state.value.compare_exchange_strong(expected, LOCKED, std::memory_order_acquire, std::memory_order_relaxed);
}

void Lock(MutexState &state)
{
    if (TryLock(state)) {
        return;
    }
    CoreLock lock(GetCore().mutex);
    while (state.value.exchange(CONTENDED, std::memory_order_acquire) != FREE) {
        GetCore().parking.Park(lock, &state);
    }
}

void Unlock(MutexState &state)
{
    // After the exchange the next owner may already have destroyed the mutex: only its address is used from here on.
    if (state.value.exchange(FREE, std::memory_order_release) == CONTENDED) {
        CoreLock lock(GetCore().mutex);
        GetCore().parking.Unpark(&state, 1);
    }
}

// A task stays in one thread here, so that the thread stands for it.
const void *Self()
{
    static thread_local const char self = 0;
    return &self;
}
} // namespace

namespace ffrt {
mutex::mutex()
{
    new (storage) MutexState;
}

mutex::~mutex()
{
    std::destroy_at(&StateIn(*this));
}

bool mutex::try_lock()
{
    return TryLock(StateIn(*this));
}

void mutex::lock()
{
    Lock(StateIn(*this));
}

void mutex::unlock()
{
    Unlock(StateIn(*this));
}

recursive_mutex::recursive_mutex()
{
    new (storage) MutexState;
}

recursive_mutex::~recursive_mutex()
{
    std::destroy_at(&StateIn(*this));
}

bool recursive_mutex::try_lock()
{
    MutexState &state = StateIn(*this);
    if (state.owner.load(std::memory_order_relaxed) != Self()) {
        if (!TryLock(state)) {
            return false;
        }
        state.owner.store(Self(), std::memory_order_relaxed);
    }
    ++state.depth;
    return true;
}

void recursive_mutex::lock()
{
    MutexState &state = StateIn(*this);
    if (state.owner.load(std::memory_order_relaxed) != Self()) {
        Lock(state);
        state.owner.store(Self(), std::memory_order_relaxed);
    }
    ++state.depth;
}

void recursive_mutex::unlock()
{
    MutexState &state = StateIn(*this);
    if (--state.depth == 0) {
        state.owner.store(nullptr, std::memory_order_relaxed);
        Unlock(state);
    }
}
} // namespace ffrt
