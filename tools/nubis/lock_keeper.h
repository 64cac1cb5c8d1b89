// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_LOCK_KEEPER_H
#define NUBIS_TOOL_LOCK_KEEPER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "lock_session.h"

namespace NubisTool {

// Keeps a lock that was taken by renewing it on a thread of its own.
class LockKeeper {
public:
    // One renewal; called by one thread at a time.
    using Renew = std::function<Renewal()>;

    // A renewal of which nothing came is tried again soon. After one that found the lock lost no other follows, and
    // onLost is called on the keeper's thread.
    LockKeeper(std::chrono::milliseconds interval, Renew renew, std::function<void()> onLost);
    ~LockKeeper();
    LockKeeper(const LockKeeper &) = delete;
    LockKeeper &operator=(const LockKeeper &) = delete;

    // Ends the renewals with a last one, which tells whether the lock was held up to now. For the thread that made the
    // keeper.
    Renewal End();

private:
    void Run();
    void StopThread();

    const std::chrono::milliseconds interval_;
    const Renew renew_;
    const std::function<void()> onLost_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ending_ = false;
    bool lost_ = false; // the thread's until it has ended
    std::thread thread_;
};

} // namespace NubisTool

#endif
