// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_proxy.h"

#include "log.h"

// The timer of DriveServiceProxy: one task that runs from the first request until the service has been idle for long.
namespace Nubis {
namespace {
constexpr uint64_t TICK_MICROSECONDS = 5000000;
constexpr int32_t DISCONNECT_TICKS = 13;
constexpr int32_t STOP_TICKS = 36;
} // namespace

void DriveServiceProxy::StartTimeTask()
{
    std::lock_guard<ffrt::mutex> lock(timerMutex_);
    if (isTimerRunning_) {
        return;
    }
    isTimerRunning_ = true;
    NB_LOGI("start timer");
    timerTask_ = ffrt::submit_h([link = link_]() { RunTimeTask(link); }, ffrt::task_attr().name("StartTimeTask"));
}

void DriveServiceProxy::RunTimeTask(const std::shared_ptr<ProxyLink> &link)
{
    bool isStopped = false;
    while (!isStopped) {
        ffrt_usleep(TICK_MICROSECONDS);
        const ProxyLink::Access proxy(link);
        isStopped = !proxy || proxy->OnTimerTick();
    }
}

// Returns whether the timer is to end.
bool DriveServiceProxy::OnTimerTick()
{
    // A request over its deadline already tells that the service is not well; asking it would only take one more slot.
    if (!requestTimeOut_.HasRequestTimeOut() && requestsInFlight_ > 0 && checkAlive_ != 0) {
        StartGreeting(false);
    }
    return CheckStopTimer();
}

void DriveServiceProxy::StartGreeting(bool isNewConnection)
{
    int32_t state = GREETING_NONE;
    while (!greeting_.compare_exchange_strong(state, GREETING_UNDER_WAY)) {
        // The one under way may be lost with the connection that it was sent on.
        if (!isNewConnection || state == GREETING_TWICE || greeting_.compare_exchange_strong(state, GREETING_TWICE)) {
            return;
        }
        state = GREETING_NONE;
    }
    ffrt::thread([link = link_]() {
        const ProxyLink::Access proxy(link);
        if (proxy) {
            proxy->Greet();
        }
    }).detach();
}

void DriveServiceProxy::Greet()
{
    int32_t state = GREETING_UNDER_WAY;
    do {
        greeting_ = state = GREETING_UNDER_WAY;
        SendHelloToCloud();
    } while (!greeting_.compare_exchange_strong(state, GREETING_NONE));
}

void DriveServiceProxy::DisconnectIdleService()
{
    {
        std::lock_guard<ffrt::mutex> lock(slotMutex_);
        if (requestsUnderWay_ > 0 || idleTicks_ < DISCONNECT_TICKS) {
            return;
        }
        isDisconnecting_ = true;
    }
    DisConnectService();
    std::lock_guard<ffrt::mutex> lock(slotMutex_);
    isDisconnecting_ = false;
    disconnected_.notify_all();
}

bool DriveServiceProxy::CheckStopTimer()
{
    const int32_t idleTicks = ++idleTicks_;
    if (idleTicks >= DISCONNECT_TICKS && requestsInFlight_ == 0 && ipcConnect_ != nullptr &&
        ipcConnect_->IsConnected()) {
        DisconnectIdleService();
    }
    std::lock_guard<ffrt::mutex> lock(timerMutex_);
    if (idleTicks < STOP_TICKS || !isTimerRunning_) {
        return false;
    }
    isTimerRunning_ = false;
    // Looked at after the mark: a request that found the timer running is seen here, a later one starts a new timer.
    if (requestsInFlight_ > 0 || idleTicks_ < STOP_TICKS) {
        isTimerRunning_ = true;
        return false;
    }
    NB_LOGI("stop timer");
    timerTask_ = ffrt::task_handle();
    return true;
}
} // namespace Nubis
