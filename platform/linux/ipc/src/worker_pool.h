// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_WORKER_POOL_H
#define HOST_IPC_WORKER_POOL_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace Host::Ipc {

// Starts a detached thread with this name (15 characters at most) and with all signals blocked, so that signals stay with
// the program's own threads. False when the system gives no more threads.
bool StartThread(const char *name, std::function<void()> body);

// The IPC threads of the process: every handler, death recipient and connection callback runs here. Grows whenever all
// threads are busy, up to MAX_WORKERS, so that a handler may wait for another one; threads without work end after a
// while. Never destroyed.
class WorkerPool {
public:
    static WorkerPool &Get();

    // Runs `job` soon. Jobs start in the order of posting, but run at the same time.
    void Post(std::function<void()> job);

private:
    WorkerPool() = default;
    ~WorkerPool() = default;

    void Work();

    std::mutex mutex_;
    std::condition_variable wake_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> jobs_;
    size_t idle_ = 0;
    size_t starting_ = 0;
    size_t threads_ = 0;
};

} // namespace Host::Ipc

#endif // HOST_IPC_WORKER_POOL_H
