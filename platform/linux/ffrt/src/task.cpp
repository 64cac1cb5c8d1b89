// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "task.h"

#include <pthread.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "core.h"
#include "saturate.h"

namespace Host::Ffrt {
namespace {
// More than this is a mistake of the caller and would only keep the task from getting a thread.
constexpr uint64_t LARGEST_STACK = 64U << 20;
constexpr std::size_t THREAD_NAME_BYTES = 15;

std::atomic<uint64_t> g_lastId{0};

// Lets go of a thread's family when the thread ends. The pointer stands apart: it can still be used by what runs after
// the destructors of thread-local objects.
thread_local Family *g_threadFamily = nullptr;
struct ThreadFamilyOwner {
    ThreadFamilyOwner() = default;
    ThreadFamilyOwner(const ThreadFamilyOwner &) = delete;
    ThreadFamilyOwner &operator=(const ThreadFamilyOwner &) = delete;
    ~ThreadFamilyOwner()
    {
        CoreLock lock(GetCore().mutex);
        std::exchange(g_threadFamily, nullptr)->Abandon();
    }
};
} // namespace

Family &Family::OfCaller()
{
    Task *task = Task::Current();
    if (task != nullptr) {
        return task->Children();
    }
    if (g_threadFamily == nullptr) {
        g_threadFamily = new Family;
        static thread_local ThreadFamilyOwner owner;
    }
    return *g_threadFamily;
}

void Family::Join()
{
    ++members_;
}

void Family::Leave()
{
    if (--members_ > 0) {
        return;
    }
    GetCore().parking.Unpark(this, ParkingLot::everybody);
    if (abandoned_) {
        delete this;
    }
}

void Family::Abandon()
{
    abandoned_ = true;
    if (members_ == 0) {
        delete this;
    }
}

void Family::AwaitAll(CoreLock &lock)
{
    while (members_ > 0) {
        GetCore().parking.Park(lock, this);
    }
}

Task::Task(std::function<void()> func, const TaskAttributes &attributes)
    : id_(++g_lastId), name_(attributes.name.substr(0, THREAD_NAME_BYTES)), delayUs_(attributes.delayUs),
      stackSize_(std::min(attributes.stackSize, LARGEST_STACK)), func_(std::move(func))
{}

Task *Task::Current()
{
    Worker *worker = WorkerPool::Current();
    return worker == nullptr ? nullptr : worker->task;
}

void Task::Launch(Family *family, const std::vector<Task *> &before)
{
    family_ = family;
    if (family_ != nullptr) {
        family_->Join();
    }
    blockers_ = 1;
    for (Task *task : before) {
        if (!task->ended_) {
            task->dependents_.push_back(this);
            ++blockers_;
        }
    }
    if (delayUs_ == 0) {
        Unblock();
    } else {
        TimeLine &timeLine = GetCore().timeLine;
        timeLine.Add(*this, timeLine.After(Saturate(delayUs_, NANOSECONDS_PER_MICROSECOND)));
    }
}

uint32_t Task::AddReference()
{
    return references_.fetch_add(1, std::memory_order_relaxed);
}

uint32_t Task::DropReference()
{
    const uint32_t before = references_.fetch_sub(1, std::memory_order_acq_rel);
    if (before == 1) {
        delete this;
    }
    return before;
}

uint64_t Task::Id() const
{
    return id_;
}

std::size_t Task::StackSize() const
{
    return stackSize_;
}

void Task::AwaitEnd(CoreLock &lock)
{
    while (!ended_) {
        GetCore().parking.Park(lock, this);
    }
}

Family &Task::Children()
{
    if (children_ == nullptr) {
        children_ = new Family;
    }
    return *children_;
}

void Task::Run() noexcept
{
    pthread_setname_np(pthread_self(), name_.c_str());
    if (func_) {
        func_();
        // What the function captured goes before the task has ended, so that a join covers it.
        func_ = nullptr;
    }
    pthread_setname_np(pthread_self(), "ffrt_idle");
}

void Task::End()
{
    ended_ = true;
    GetCore().parking.Unpark(this, ParkingLot::everybody);
    for (Task *dependent : dependents_) {
        dependent->Unblock();
    }
    dependents_.clear();
    if (children_ != nullptr) {
        children_->Abandon();
    }
    if (family_ != nullptr) {
        family_->Leave();
    }
    DropReference();
}

void Task::OnDue()
{
    Unblock();
}

void Task::Unblock()
{
    if (--blockers_ == 0) {
        GetCore().pool.Submit(*this);
    }
}
} // namespace Host::Ffrt
