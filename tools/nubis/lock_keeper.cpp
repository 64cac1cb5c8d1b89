// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lock_keeper.h"

#include <algorithm>
#include <utility>

namespace NubisTool {
namespace {

constexpr std::chrono::milliseconds RETRY_TIME(1000);

} // namespace

LockKeeper::LockKeeper(std::chrono::milliseconds interval, Renew renew, std::function<void()> onLost)
    : interval_(interval), renew_(std::move(renew)), onLost_(std::move(onLost)), thread_([this] { Run(); })
{}

LockKeeper::~LockKeeper()
{
    StopThread();
}

Renewal LockKeeper::End()
{
    StopThread();
    return lost_ ? Renewal::LOST : renew_();
}

void LockKeeper::StopThread()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void LockKeeper::Run()
{
    std::chrono::milliseconds time = interval_;
    std::unique_lock<std::mutex> lock(mutex_);
    while (!lost_ && !changed_.wait_for(lock, time, [this] { return ending_; })) {
        lock.unlock();
        Renewal renewal = renew_();
        lost_ = renewal == Renewal::LOST;
        if (lost_) {
            onLost_();
        }
        time = renewal == Renewal::HELD ? interval_ : std::min(interval_, RETRY_TIME);
        lock.lock();
    }
}

} // namespace NubisTool
