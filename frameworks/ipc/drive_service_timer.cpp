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
        SendHelloToCloud();
    }
    return CheckStopTimer();
}

bool DriveServiceProxy::CheckStopTimer()
{
    const int32_t idleTicks = ++idleTicks_;
    if (idleTicks >= DISCONNECT_TICKS && requestsInFlight_ == 0 && ipcConnect_ != nullptr &&
        ipcConnect_->IsConnected()) {
        DisConnectService();
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
