// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_DRIVE_SERVICE_PROXY_H
#define NUBIS_DRIVE_SERVICE_PROXY_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <json/value.h>

#include "drive_callback_stub.h"
#include "drive_ipc_connect.h"
#include "ffrt_inner.h"
#include "proxy_link.h"
#include "request_time_out.h"

namespace Nubis {
// The way to the cloud-drive service of one user: connects on demand, carries requests, and disconnects when idle.
//
// The kit of the user owns it. Any thread may call; at most twelve requests are in flight, further ones wait. Those
// inside an UrgentScope wait only while 64 are in flight and some of these come back. Its end waits for a liveness
// exchange that is under way; requests must have returned by then. The service stays connected.
class DriveServiceProxy {
public:
    // What SendData returns besides the errors of the transaction and the statuses of the asynchronous wait.
    enum SendStatus : int32_t {
        SEND_OK = 0,
        SEND_NO_CALLBACK = -1,
        SEND_NOT_CONNECTED = DriveIpcConnect::NOT_CONNECTED,
    };

    // Connects at once, which may take some seconds; a failure is left to the requests.
    explicit DriveServiceProxy(int userId);
    ~DriveServiceProxy();
    DriveServiceProxy(const DriveServiceProxy &) = delete;
    DriveServiceProxy &operator=(const DriveServiceProxy &) = delete;

    // Returns when connected or when the attempt has failed; callers at the same time share one attempt.
    void ConnectService();
    // Returns when the ability manager has said that the connection is ended, or after five seconds.
    void DisConnectService();
    // Asks the bundle manager for the service's "abilityVersion"; keeps the present one when it cannot be had.
    void GetAblityVerison();
    // Asks the service how it is and whether it wants to be asked while requests are in flight.
    void SendHelloToCloud();

    // Sends one request and fills the reply text; returns a SendStatus or another status as said there. Adds "uuid" to
    // the request when it goes asynchronously. timeout in seconds: an asynchronous request waits that
    // long, below 1 without limit; any request is logged as late after it, below 1 after 180. traceId and function are
    // those of the request.
    int32_t SendData(
        Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout);
    // The two ways of SendData, which takes a slot and watches the deadline around them; without a connection
    // SEND_NOT_CONNECTED.
    int32_t InnerSyncRequest(
        Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function);
    int32_t InnerAsyncRequest(
        Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout);
    // Whether requests of this function are answered through the callback stub instead of the reply parcel. It may ask
    // the service for its parameters, so whoever calls it must not have a slot.
    bool IsSupportAsync(const std::string &function);

    // Has SendHelloToCloud done by a task of its own, so that a service that does not answer holds nobody up. At most
    // one is under way: another one of a tick is left out, one of a new connection follows it.
    void StartGreeting(bool isNewConnection);

    // Starts the timer unless it runs; every request does.
    void StartTimeTask();
    // One idle tick: disconnects a service that has been idle for long, and returns whether the timer is to end.
    bool CheckStopTimer();

    // Gives every request that waits for an asynchronous reply an empty one.
    void WakeAllRequests();

private:
    class UnderWay;
    class InFlight;
    enum GreetingState : int32_t {
        GREETING_NONE,
        GREETING_UNDER_WAY,
        GREETING_TWICE
    };

    bool EnsureConnected();
    int32_t SendConnected(
        Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout);
    void BeginRequest();
    void EndRequest();
    void TakeSlot();
    void AwaitUrgentSlot(std::unique_lock<ffrt::mutex> &lock);
    void ReturnSlot();

    static void RunTimeTask(const std::shared_ptr<ProxyLink> &link);
    bool OnTimerTick();
    void DisconnectIdleService();
    void Greet();

    // Constant after construction.
    const std::string bundleName_;
    const std::string abilityName_;
    const std::u16string descriptor_;
    const int32_t maxRequests_;
    const int32_t userId_;
    const std::shared_ptr<ProxyLink> link_;
    OHOS::sptr<DriveIpcConnect> ipcConnect_;
    OHOS::sptr<DriveCallbackStub> callbackStub_;

    // The service wants liveness exchanges while requests are in flight.
    std::atomic<int32_t> checkAlive_{0};
    // -1 while unknown.
    std::atomic<int32_t> abilityVersion_{-1};

    // Guards the change of requestsInFlight_, which the timer reads without it, and what is below.
    ffrt::mutex slotMutex_;
    ffrt::condition_variable slotFreed_;
    ffrt::condition_variable urgentSlotFreed_;
    std::atomic<uint32_t> requestsInFlight_{0};
    uint64_t slotsReturned_ = 0;
    // From before its look at the connection to its end a request is under way, and an idle service is disconnected
    // only while none is; one that comes meanwhile waits.
    uint32_t requestsUnderWay_ = 0;
    bool isDisconnecting_ = false;
    ffrt::condition_variable disconnected_;

    std::mutex connectMutex_;
    // Attempts that have failed; changed under connectMutex_, read by those who are about to wait for it.
    std::atomic<uint32_t> failedAttempts_{0};

    RequestTimeOut requestTimeOut_;

    // Guards the start and the end of the timer task.
    ffrt::mutex timerMutex_;
    ffrt::task_handle timerTask_;
    std::atomic<bool> isTimerRunning_{false};
    std::atomic<int32_t> idleTicks_{0};
    std::atomic<int32_t> greeting_{GREETING_NONE};
};
} // namespace Nubis

#endif // NUBIS_DRIVE_SERVICE_PROXY_H
