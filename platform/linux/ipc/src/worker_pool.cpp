// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "worker_pool.h"

#include <chrono>
#include <csignal>
#include <exception>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

#include "ipc_limits.h"
#include "ipc_log.h"

namespace Host::Ipc {

namespace {

constexpr std::chrono::seconds IDLE_LIFE(10);

void RunGuarded(const std::function<void()> &job)
{
    try {
        job();
    } catch (const std::exception &error) {
        IPC_LOGE("an IPC thread caught an exception: %{public}s", error.what());
    } catch (...) {
        IPC_LOGE("an IPC thread caught an unknown exception");
    }
}

} // namespace

bool StartThread(const char *name, std::function<void()> body)
{
    // A thread inherits the mask of the one that starts it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool started = true;
    try {
        std::thread([name, body = std::move(body)] {
            pthread_setname_np(pthread_self(), name);
            RunGuarded(body);
        }).detach();
    } catch (const std::exception &error) {
        IPC_LOGE("cannot start a thread: %{public}s", error.what());
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

WorkerPool &WorkerPool::Get()
{
    static auto *pool = new WorkerPool();
    return *pool;
}

void WorkerPool::Post(std::function<void()> job)
{
    bool grow = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        jobs_.push_back(std::move(job));
        if (jobs_.size() > idle_ + starting_ && threads_ < MAX_WORKERS) {
            ++starting_;
            ++threads_;
            grow = true;
        }
    }
    wake_.notify_one();
    // Without a new thread the job waits for one of the present threads.
    if (grow && !StartThread("ipc-worker", [this] { Work(); })) {
        std::lock_guard<std::mutex> lock(mutex_);
        --starting_;
        --threads_;
    }
}

void WorkerPool::Work()
{
    std::unique_lock<std::mutex> lock(mutex_);
    --starting_;
    while (true) {
        ++idle_;
        bool found = wake_.wait_for(lock, IDLE_LIFE, [this] { return !jobs_.empty(); });
        --idle_;
        if (!found) {
            --threads_;
            return;
        }
        {
            std::function<void()> job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            RunGuarded(job);
        }
        lock.lock();
    }
}

} // namespace Host::Ipc
