// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_REQUEST_POOL_H
#define NUBIS_SERVICE_REQUESTS_REQUEST_POOL_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "records/limits.h"

namespace DriveService {

struct RequestPoolLimits {
    size_t threads = MAX_REQUEST_THREADS;
    size_t queued = MAX_QUEUED_REQUESTS; // beyond those that threads work on
};

// The threads on which requests are answered after their transaction has ended. Grows while all threads are busy: one
// that waits for its client may be waiting for another request of that client. Threads without work end after a while.
// Never destroyed, so that the process may end while they work. Any thread may call.
class RequestPool {
public:
    explicit RequestPool(RequestPoolLimits limits = {});
    RequestPool(const RequestPool &) = delete;
    RequestPool &operator=(const RequestPool &) = delete;

    // The one of the process.
    static RequestPool &Get();

    // Runs the work soon; begun in the order of posting, but at the same time. False when the pool is full or Finish
    // has begun: the work is then never run.
    [[nodiscard]] bool Post(std::function<void()> work);

    // Waits until all work is done; false when that takes longer.
    bool AwaitIdle(std::chrono::milliseconds atMost);

    // The same, and takes no more work.
    bool Finish(std::chrono::milliseconds atMost);

private:
    ~RequestPool() = default;

    bool StartThread();
    void Work();

    const RequestPoolLimits limits_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> queue_;
    size_t threads_ = 0;
    size_t busy_ = 0;
    bool finishing_ = false;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_REQUEST_POOL_H
