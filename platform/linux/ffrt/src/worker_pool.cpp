// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "worker_pool.h"

#include <pthread.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "core.h"
#include "task.h"

namespace Host::Ffrt {
namespace {
// So many threads may be active, that is run or block outside FFRT, before growth waits for a standstill.
constexpr std::size_t GROWS_AT_ONCE = 64;
constexpr std::size_t MOST_THREADS = 4096;
constexpr std::size_t REINFORCEMENT = 8;
constexpr std::chrono::milliseconds STANDSTILL(5);
constexpr std::chrono::seconds IDLE_LIFE(10);
constexpr int PATIENCE_IN_ALL = 10;

// Longer than a caller takes from one call back to its next call, and nothing beside what a task costs.
constexpr std::chrono::microseconds WATCH(100);

// Lets the other thread of a shared core go ahead.
void Relax()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ __volatile__("yield");
#endif
}

thread_local Worker *g_current = nullptr;
} // namespace

void Assignment::Give()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        isGiven_ = true;
    }
    given_.notify_one();
}

bool Assignment::Look()
{
    return isGiven_.load(std::memory_order_relaxed) && isGiven_.exchange(false);
}

bool Assignment::AwaitUntil(Moment end)
{
    std::unique_lock<std::mutex> lock(mutex_);
    given_.wait_until(lock, end, [this]() { return isGiven_.load(); });
    return isGiven_.exchange(false);
}

Worker *WorkerPool::Current()
{
    return g_current;
}

void WorkerPool::Submit(Task &task)
{
    ready_.push_back(&task);
    Staff();
}

void WorkerPool::Staff()
{
    while (!ready_.empty()) {
        const bool fitsCached = ready_.front()->StackSize() <= stackSize;
        if (fitsCached && !idle_.empty()) {
            Worker *worker = idle_.back();
            idle_.pop_back();
            ++busy_;
            worker->task = ready_.front();
            ready_.pop_front();
            ++taken_;
            worker->assigned.Give();
        } else if (busy_ - parked_ >= GROWS_AT_ONCE || !StartWorker()) {
            break;
        }
    }
    if (!ready_.empty() && nextLook_ == Moment::max()) {
        takenAtLook_ = taken_;
        nextLook_ = std::chrono::steady_clock::now() + STANDSTILL;
        GetCore().timeLine.LookAgainAt(nextLook_);
    }
}

Moment WorkerPool::Reinforce()
{
    if (ready_.empty()) {
        nextLook_ = Moment::max();
        return nextLook_;
    }
    const Moment now = std::chrono::steady_clock::now();
    if (now >= nextLook_) {
        const bool standstill = taken_ == takenAtLook_;
        for (std::size_t i = 0; standstill && i < REINFORCEMENT && !ready_.empty() && StartWorker(); ++i) {
        }
        takenAtLook_ = taken_;
        nextLook_ = now + STANDSTILL;
    }
    return nextLook_;
}

// Gives the first ready task to a new thread.
bool WorkerPool::StartWorker()
{
    if (workers_.size() >= MOST_THREADS) {
        return false;
    }
    Task *task = ready_.front();
    auto *worker = new Worker;
    worker->task = task;
    worker->cached = task->StackSize() <= stackSize;

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, std::max(stackSize, task->StackSize()));
    pthread_t thread;
    const bool started = pthread_create(&thread, &attributes, &WorkerPool::ThreadMain, worker) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) {
        delete worker;
        return false;
    }
    ready_.pop_front();
    workers_.insert(worker);
    ++busy_;
    ++taken_;
    return true;
}

void *WorkerPool::ThreadMain(void *worker)
{
    auto *self = static_cast<Worker *>(worker);
    g_current = self;
    GetCore().pool.Work(*self);
    // The thread-local objects of what ran here are destroyed later, and may submit and wait: as in any other thread.
    g_current = nullptr;
    delete self;
    return nullptr;
}

void WorkerPool::Work(Worker &self)
{
    CoreLock lock(GetCore().mutex, std::defer_lock);
    do {
        self.task->Run();
        lock.lock();
        self.task->End();
        self.task = nullptr;
        if (self.leftBehind) {
            self.leftBehind = false;
            --leftBehind_;
        }
        OnProgress();
    } while (NextTask(lock, self));
    workers_.erase(&self);
}

bool WorkerPool::NextTask(CoreLock &lock, Worker &self)
{
    if (self.cached && !ready_.empty() && ready_.front()->StackSize() <= stackSize) {
        self.task = ready_.front();
        ready_.pop_front();
        ++taken_;
        lock.unlock();
        return true;
    }
    --busy_;
    // One less is active, so that a task which found too many may have a new thread now.
    Staff();
    OnProgress();
    return self.cached && AwaitTask(lock, self);
}

bool WorkerPool::AwaitTask(CoreLock &lock, Worker &self)
{
    // The last one to become idle is the first one to work again, so that those not needed can end.
    idle_.push_back(&self);
    lock.unlock();
    const Moment now = std::chrono::steady_clock::now();
    const Moment end = now + IDLE_LIFE;
    if (WatchForTask(self, now + WATCH) || self.assigned.AwaitUntil(end)) {
        return true;
    }
    lock.lock();
    if (self.task == nullptr) {
        idle_.erase(std::find(idle_.begin(), idle_.end(), &self));
        return false;
    }
    // It came at the last moment.
    self.assigned.AwaitUntil(end);
    lock.unlock();
    return true;
}

// A caller that makes one call after the other has the next task soon. Going to sleep and being woken would take longer.
// Only the one that became idle last watches, because it gets the next task.
bool WorkerPool::WatchForTask(Worker &self, Moment end)
{
    watching_ = &self;
    while (watching_ == &self && std::chrono::steady_clock::now() < end) {
        if (self.assigned.Look()) {
            return true;
        }
        Relax();
    }
    return false;
}

void WorkerPool::OnParked(Worker &worker)
{
    if (worker.leftBehind) {
        worker.leftBehind = false;
        --leftBehind_;
    }
    worker.parked = true;
    ++parked_;
    Staff();
    OnProgress();
}

void WorkerPool::OnResumed(Worker &worker)
{
    worker.parked = false;
    --parked_;
}

void WorkerPool::OnProgress()
{
    ++progress_;
    quiet_.notify_all();
}

std::size_t WorkerPool::Active() const
{
    const std::size_t self = g_current != nullptr && !g_current->leftBehind ? 1 : 0;
    return ready_.size() + busy_ - parked_ - leftBehind_ - self;
}

void WorkerPool::WaitForQuiet(CoreLock &lock, std::chrono::milliseconds patience)
{
    Moment end = std::chrono::steady_clock::now() + patience;
    const Moment endOfAll = end + (PATIENCE_IN_ALL - 1) * patience;
    uint64_t seen = progress_;
    while (Active() > 0) {
        quiet_.wait_until(lock, end);
        const Moment now = std::chrono::steady_clock::now();
        if (now >= endOfAll || (now >= end && progress_ == seen)) {
            LeaveBehind();
            return;
        }
        if (progress_ != seen) {
            seen = progress_;
            end = std::min(now + patience, endOfAll);
        }
    }
}

void WorkerPool::LeaveBehind()
{
    for (Worker *worker : workers_) {
        if (worker != g_current && worker->task != nullptr && !worker->parked && !worker->leftBehind) {
            worker->leftBehind = true;
            ++leftBehind_;
        }
    }
}
} // namespace Host::Ffrt
