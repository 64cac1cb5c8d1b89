// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_PUSH_NOTIFIER_H
#define NUBIS_SERVICE_PUSH_NOTIFIER_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "account/push_key.h"
#include "store/store.h"

namespace DriveService {

// Sends the notices of the store, in order, signed, on a thread of its own, which holds no store session meanwhile. A
// notice leaves the store after it was sent, so one that a crash interrupts is sent again by the next service: receivers
// may get it twice, with the same "notifyId". Subscriptions that have expired get nothing and are dropped.
class Notifier {
public:
    // Gives the text to those who listen to the event name; false with a text in `error` when that failed.
    using Publish = std::function<bool(const std::string &eventName, const std::string &text, std::string &error)>;

    // Begins with what is in the store. Everything must outlive it. `nowMs` is since the epoch.
    Notifier(Store &store, PushKey &pushKey, std::function<int64_t()> nowMs, Publish publish);
    // Ends after the notice that is being sent.
    ~Notifier();
    Notifier(const Notifier &) = delete;
    Notifier &operator=(const Notifier &) = delete;

    // Waits until nothing is sent any more that was taken from the store before: what was dropped from it stays unsent.
    void FinishRound();
    // Waits until everything is sent, at most so long; false when something is left.
    bool Finish(std::chrono::milliseconds time);

private:
    void Wake();
    void Run();
    bool SendAll() noexcept;
    // False when there was nothing to send.
    bool SendRound();
    void Send(const Notice &notice);

    Store &store_;
    PushKey &pushKey_;
    const std::function<int64_t()> nowMs_;
    const Publish publish_;
    // The thread's own: those that are sent but could not be dropped, by uid.
    std::set<std::string> sent_;

    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    bool woken_ = true;
    bool busy_ = false;
    bool stopped_ = false;
    uint64_t roundsBegun_ = 0;
    uint64_t roundsEnded_ = 0;

    std::thread thread_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_PUSH_NOTIFIER_H
