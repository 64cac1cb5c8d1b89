// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_TASK_H
#define HOST_FFRT_TASK_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "time_line.h"

namespace Host::Ffrt {
// What task_attr holds in its storage.
struct TaskAttributes {
    std::string name;
    uint64_t delayUs = 0;
    uint64_t stackSize = 0;
    uint64_t timeoutUs = 0;
    int qos;
};

// The tasks that one task, or one thread from elsewhere, has submitted and that have not ended. Destroys itself when
// its owner has let go of it and the last task has ended. Under the core lock.
class Family {
public:
    // That of the calling task or thread. Without the lock; made at the first call.
    static Family &OfCaller();

    void Join();
    void Leave();
    void Abandon();
    void AwaitAll(CoreLock &lock);

private:
    std::size_t members_ = 0;
    bool abandoned_ = false;
};

// One submitted function. Counted: one reference is its own until it has ended, the others are those of handles and
// dependences.
class Task : public TimedEntry {
public:
    Task(std::function<void()> func, const TaskAttributes &attributes);

    // The task that calls, nullptr outside a task.
    static Task *Current();

    // Begins the life of the task: it runs when the delay is over and the tasks of `before` have ended. Without a
    // family nobody's wait() knows of it. Under the core lock.
    void Launch(Family *family, const std::vector<Task *> &before = {});

    uint32_t AddReference();
    // Returns how many there were; the last one destroys the task.
    uint32_t DropReference();

    uint64_t Id() const;
    std::size_t StackSize() const;
    // Blocks until the task has ended. The caller holds a reference.
    void AwaitEnd(CoreLock &lock);
    // That of the tasks submitted by this one. Only for the task itself.
    Family &Children();

    // For the worker: Run without the lock, then End under it, which gives the task's own reference up.
    void Run() noexcept;
    void End();
    void OnDue() override;

private:
    ~Task() override = default;
    void Unblock();

    std::atomic<uint32_t> references_{1};
    const uint64_t id_;
    const std::string name_;
    const uint64_t delayUs_;
    const std::size_t stackSize_;
    std::function<void()> func_;
    std::size_t blockers_ = 0;
    bool ended_ = false;
    std::vector<Task *> dependents_;
    Family *family_ = nullptr;
    Family *children_ = nullptr;
};
} // namespace Host::Ffrt

#endif
