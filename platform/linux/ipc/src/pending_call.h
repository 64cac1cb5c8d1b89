// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_PENDING_CALL_H
#define HOST_IPC_PENDING_CALL_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "wire_parcel.h"

namespace Host::Ipc {

// A request whose sender waits. The first completion counts. Any thread.
class PendingCall {
public:
    // `status` is 0 when a reply has come, then `result` is the far handler's. False, with `reply` untouched, when it was
    // complete already.
    bool Complete(int status, int result = 0, WireParcel &&reply = WireParcel())
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (done_) {
                return false;
            }
            done_ = true;
            status_ = status;
            result_ = result;
            reply_ = std::move(reply);
        }
        arrived_.notify_all();
        return true;
    }

    int Wait(int &result, WireParcel &reply)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        arrived_.wait(lock, [this] { return done_; });
        result = result_;
        reply = std::move(reply_);
        return status_;
    }

    // False when nothing has come in time.
    bool WaitFor(std::chrono::milliseconds time, int &status, WireParcel &reply)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!arrived_.wait_for(lock, time, [this] { return done_; })) {
            return false;
        }
        status = status_;
        reply = std::move(reply_);
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    // Guarded by mutex_.
    bool done_ = false;
    int status_ = 0;
    int result_ = 0;
    WireParcel reply_;
};

} // namespace Host::Ipc

#endif // HOST_IPC_PENDING_CALL_H
