// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/request_pool.h"

#include <csignal>
#include <exception>
#include <string>
#include <thread>
#include <utility>

#include <pthread.h>

#include "util/log.h"

namespace DriveService {

namespace {

constexpr std::chrono::seconds IDLE_LIFE(10);

void RunGuarded(const std::function<void()> &work)
{
    try {
        work();
    } catch (const std::exception &failure) {
        LogError(std::string("a request ended by an exception: ") + failure.what());
    } catch (...) {
        LogError("a request ended by an unknown exception");
    }
}

} // namespace

RequestPool::RequestPool(RequestPoolLimits limits) : limits_(limits)
{}

RequestPool &RequestPool::Get()
{
    static auto *pool = new RequestPool();
    return *pool;
}

bool RequestPool::Post(std::function<void()> work)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        size_t idle = threads_ - busy_;
        if (finishing_ || queue_.size() >= limits_.queued + idle) {
            return false;
        }
        queue_.push_back(std::move(work));
        // Threads that are idle may be on their way to what was queued before.
        if (queue_.size() > idle && threads_ < limits_.threads && !StartThread() && threads_ == 0) {
            queue_.pop_back();
            return false;
        }
    }
    wake_.notify_one();
    return true;
}

bool RequestPool::Finish(std::chrono::milliseconds atMost)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        finishing_ = true;
    }
    return AwaitIdle(atMost);
}

bool RequestPool::AwaitIdle(std::chrono::milliseconds atMost)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return done_.wait_for(lock, atMost, [this] { return queue_.empty() && busy_ == 0; });
}

// Within the lock, so that the thread is counted before it runs.
bool RequestPool::StartThread()
{
    // Signals stay with the program's own threads; a thread inherits the mask of the one that starts it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool started = true;
    try {
        std::thread([this] { Work(); }).detach();
        ++threads_;
    } catch (const std::exception &failure) {
        LogError(std::string("cannot start a thread: ") + failure.what());
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

void RequestPool::Work()
{
    pthread_setname_np(pthread_self(), "drive-request");
    std::unique_lock<std::mutex> lock(mutex_);
    while (wake_.wait_for(lock, IDLE_LIFE, [this] { return !queue_.empty(); })) {
        ++busy_;
        {
            std::function<void()> work = std::move(queue_.front());
            queue_.pop_front();
            lock.unlock();
            RunGuarded(work);
        }
        lock.lock();
        --busy_;
        if (queue_.empty() && busy_ == 0) {
            done_.notify_all();
        }
    }
    --threads_;
}

} // namespace DriveService
