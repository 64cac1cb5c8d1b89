// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>

#include "cpp/mutex.h"

#include "core.h"
#include "race_detector.h"

namespace {
using Host::Ffrt::CoreLock;
using Host::Ffrt::GetCore;
namespace RaceDetector = Host::Ffrt::RaceDetector;

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

void Create(ffrt_mutex_t &storage)
{
    RaceDetector::Create(new (storage.storage) MutexState);
}

void Destroy(ffrt_mutex_t &storage)
{
    MutexState &state = StateIn(storage);
    RaceDetector::Destroy(&state);
    std::destroy_at(&state);
}

bool TakeIfFree(MutexState &state)
{
    uint32_t expected = FREE;
    return state.value.compare_exchange_strong(expected, LOCKED, std::memory_order_acquire, std::memory_order_relaxed);
}

bool TryLock(MutexState &state)
{
    RaceDetector::BeforeLock(&state, true);
    const bool taken = TakeIfFree(state);
    RaceDetector::AfterLock(&state, true, taken);
    return taken;
}

void Lock(MutexState &state)
{
    RaceDetector::BeforeLock(&state, false);
    if (!TakeIfFree(state)) {
        RaceDetector::BeginForeign(&state);
        CoreLock lock(GetCore().mutex);
        while (state.value.exchange(CONTENDED, std::memory_order_acquire) != FREE) {
            GetCore().parking.Park(lock, &state);
        }
        lock.unlock();
        RaceDetector::EndForeign(&state);
    }
    RaceDetector::AfterLock(&state, false, true);
}

void Unlock(MutexState &state)
{
    RaceDetector::BeforeUnlock(&state);
    // After the exchange the next owner may already have destroyed the mutex: only its address is used from here on.
    if (state.value.exchange(FREE, std::memory_order_release) == CONTENDED) {
        RaceDetector::BeginForeign(&state);
        CoreLock lock(GetCore().mutex);
        GetCore().parking.Unpark(&state, 1);
        lock.unlock();
        RaceDetector::EndForeign(&state);
    }
    RaceDetector::AfterUnlock(&state);
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
    Create(*this);
}

mutex::~mutex()
{
    Destroy(*this);
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
    Create(*this);
}

recursive_mutex::~recursive_mutex()
{
    Destroy(*this);
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
