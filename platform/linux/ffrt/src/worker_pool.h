// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_WORKER_POOL_H
#define HOST_FFRT_WORKER_POOL_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "time_line.h"

namespace Host::Ffrt {
class Task;

// Tells an idle worker that it has a task. Apart from the core lock, or whoever is woken would wait for the lock that the
// waker still has.
class Assignment {
public:
    // With the core lock, which also keeps the worker from ending meanwhile.
    void Give();
    // Both without the core lock. Look does not block. False when nothing was given, to AwaitUntil until `end`.
    bool Look();
    bool AwaitUntil(Moment end);

private:
    std::mutex mutex_;
    std::condition_variable given_;
    std::atomic<bool> isGiven_{false};
};

// One thread of the pool. Everything but the thread's own loop is under the core lock.
struct Worker {
    Task *task = nullptr;
    bool cached = true;
    bool parked = false;
    bool leftBehind = false;
    Assignment assigned;
};

// The threads that run tasks. A task may block for minutes, so a thread is started whenever none is idle; only while
// very many are busy outside FFRT waits does a task wait a moment for one to become free. Threads end after a while
// without work. None is ever joined. All members but Current are called under the core lock.
class WorkerPool {
public:
    static constexpr std::size_t stackSize = 4U << 20;

    // The worker that the calling thread is, nullptr for threads from elsewhere. Without the lock.
    static Worker *Current();

    // The task runs as soon as there is a thread; it must stay alive until then.
    void Submit(Task &task);
    // Adds threads if tasks wait and none has been taken for a while. Returns the real moment of the next look.
    Moment Reinforce();

    // The task of this worker blocks in FFRT; OnResumed is called by whoever wakes it.
    void OnParked(Worker &worker);
    void OnResumed(Worker &worker);

    // Waits until no task is ready or runs outside FFRT waits, the caller's own not counted; see ManualClock::Advance.
    void WaitForQuiet(CoreLock &lock, std::chrono::milliseconds patience);

private:
    static void *ThreadMain(void *worker);
    void Work(Worker &self);
    // Both give the lock back when there is a task to run, and keep it when the worker is to end.
    bool NextTask(CoreLock &lock, Worker &self);
    bool AwaitTask(CoreLock &lock, Worker &self);
    bool WatchForTask(Worker &self, Moment end);
    void Staff();
    bool StartWorker();
    void OnProgress();
    std::size_t Active() const;
    void LeaveBehind();

    std::deque<Task *> ready_;
    std::vector<Worker *> idle_;
    std::atomic<Worker *> watching_{nullptr}; // needs no lock
    std::unordered_set<Worker *> workers_;
    std::size_t busy_ = 0;
    std::size_t parked_ = 0;
    std::size_t leftBehind_ = 0;
    uint64_t taken_ = 0;
    uint64_t takenAtLook_ = 0;
    Moment nextLook_ = Moment::max();
    uint64_t progress_ = 0;
    std::condition_variable quiet_;
};
} // namespace Host::Ffrt

#endif
