// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "push/notifier.h"

#include <exception>
#include <utility>
#include <vector>

#include "account/settings.h"
#include "push/notification.h"
#include "util/log.h"

namespace DriveService {

namespace {

// Notices that leave the store together; as many are repeated at most after a crash.
constexpr int64_t ROUND_NOTICES = 64;
constexpr std::chrono::seconds RETRY_TIME(5);

} // namespace

Notifier::Notifier(Store &store, PushKey &pushKey, std::function<int64_t()> nowMs, Publish publish)
    : store_(store), pushKey_(pushKey), nowMs_(std::move(nowMs)), publish_(std::move(publish)),
      thread_([this] { Run(); })
{
    store_.SetNoticeListener([this] { Wake(); });
}

Notifier::~Notifier()
{
    store_.SetNoticeListener({});
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void Notifier::Wake()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        woken_ = true;
    }
    changed_.notify_all();
}

void Notifier::FinishRound()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this, begun = roundsBegun_] { return roundsEnded_ >= begun; });
}

bool Notifier::Finish(std::chrono::milliseconds time)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, time, [this] { return !woken_ && !busy_; });
}

void Notifier::Run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return woken_ || stopped_; });
        if (stopped_) {
            return;
        }
        woken_ = false;
        busy_ = true;
        lock.unlock();
        bool isDone = SendAll();
        lock.lock();
        if (!isDone) {
            woken_ = true;
            changed_.wait_for(lock, RETRY_TIME, [this] { return stopped_; });
        }
        busy_ = false;
        changed_.notify_all();
    }
}

bool Notifier::SendAll() noexcept
{
    for (bool more = true; more;) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (stopped_) {
                return true;
            }
            ++roundsBegun_;
        }
        bool isGood = true;
        try {
            more = SendRound();
        } catch (const std::exception &failure) {
            LogError(std::string("notifications could not be sent: ") + failure.what());
            isGood = false;
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            roundsEnded_ = roundsBegun_;
        }
        changed_.notify_all();
        if (!isGood) {
            return false;
        }
    }
    return true;
}

bool Notifier::SendRound()
{
    std::vector<Notice> notices = store_.BeginRead()->Notices(ROUND_NOTICES);
    if (notices.empty()) {
        return false;
    }
    for (const Notice &notice : notices) {
        if (sent_.count(notice.uid) == 0) {
            Send(notice);
            sent_.insert(notice.uid);
        }
    }
    std::unique_ptr<WriteSession> session = store_.BeginWrite();
    session->DropNotices(notices);
    session->DropExpiredSubscriptions(nowMs_());
    session->Commit();
    sent_.clear();
    return true;
}

void Notifier::Send(const Notice &notice)
{
    if (notice.subscription.expirationTime <= nowMs_()) {
        return;
    }
    std::string text = MakeNotification(notice, AccountId(store_), pushKey_.Id(),
        [this](const std::string &signedText) { return pushKey_.SignHex(signedText); });
    std::string error;
    if (!publish_(notice.subscription.eventName, text, error)) {
        // Those who can be reached have it; the others are told by the channel that something is missing.
        LogError("notification " + notice.uid + " did not reach everyone: " + error);
    }
}

} // namespace DriveService
