// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_proxy.h"

#include <chrono>
#include <map>

#include "json_helper.h"
#include "log.h"
#include "message_parcel_util.h"
#include "sys_config.h"
#include "urgent_scope.h"
#include "uuid_helper.h"
#include "wall_clock.h"

// The request path of DriveServiceProxy.
//
//   code  request parcel                                          reply parcel
//   3     token, text, callback object (saves and modifies only)  int32 result of the service, text
//   4     token, text with "uuid", callback object                not read; the reply comes through the object
namespace Nubis {
namespace {
constexpr uint32_t SYNC_REQUEST = 3;
constexpr uint32_t ASYNC_REQUEST = 4;
constexpr int DEFAULT_TIMEOUT_SECONDS = 180;
constexpr int32_t LEAST_ASYNC_VERSION = 2;
// In flight in all, before those inside an UrgentScope wait, too: the service refuses a process that has far more.
constexpr uint32_t MAX_URGENT_IN_FLIGHT = 64;
constexpr std::chrono::seconds STANDSTILL(5);

// The functions that may go asynchronously, with the least version of the service that can do it.
const std::map<std::string, int32_t> &AsyncFunctions()
{
    static const auto *functions = new std::map<std::string, int32_t>{
        {"fetchRecordWithId", 2},
        {"GetCloudUserInfo", 2},
        {"batchDownloadRecords", 2},
        {"saveRecords", 3},
        {"modifyRecords", 3},
        {"fetchAssetStatusWithId", 3},
        {"batchCreateAsset", 3},
        {"updateAssetRevision", 3},
    };
    return *functions;
}

// While it works on these, the service asks for the assets of the records through the callback object.
bool NeedsCallback(const std::string &function)
{
    return function == "saveRecords" || function == "modifyRecords";
}
} // namespace

// Keeps the timer from disconnecting the service.
class DriveServiceProxy::UnderWay {
public:
    explicit UnderWay(DriveServiceProxy &proxy) : proxy_(proxy)
    {
        proxy_.BeginRequest();
    }
    ~UnderWay()
    {
        proxy_.EndRequest();
    }
    UnderWay(const UnderWay &) = delete;
    UnderWay &operator=(const UnderWay &) = delete;

private:
    DriveServiceProxy &proxy_;
};

// One request's slot and deadline.
class DriveServiceProxy::InFlight {
public:
    InFlight(DriveServiceProxy &proxy, const std::string &traceId) : proxy_(proxy), traceId_(traceId)
    {
        proxy_.TakeSlot();
    }
    ~InFlight()
    {
        proxy_.requestTimeOut_.RemoveRequest(traceId_);
        proxy_.ReturnSlot();
    }
    InFlight(const InFlight &) = delete;
    InFlight &operator=(const InFlight &) = delete;

private:
    DriveServiceProxy &proxy_;
    const std::string &traceId_;
};

int32_t DriveServiceProxy::SendData(
    Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout)
{
    const UnderWay underWay(*this);
    if (!EnsureConnected()) {
        NB_LOGE("send request failed, ipcconnect is null or is not connect");
        return SEND_NOT_CONNECTED;
    }
    return SendConnected(request, reply, traceId, function, timeout);
}

int32_t DriveServiceProxy::SendConnected(
    Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout)
{
    // Before there is a slot to hold: it may send a request itself, which then waits for nobody who waits for it.
    const bool isAsync = IsSupportAsync(function);
    int32_t status = SEND_OK;
    long long cost = 0;
    {
        const InFlight inFlight(*this, traceId);
        if (!isTimerRunning_) {
            StartTimeTask();
        }
        idleTicks_ = 0;
        requestTimeOut_.AddRequest(traceId, static_cast<uint32_t>(timeout < 1 ? DEFAULT_TIMEOUT_SECONDS : timeout));
        const int64_t start = WallClock::NowMillis();
        status = isAsync ? InnerAsyncRequest(request, reply, traceId, function, timeout)
                         : InnerSyncRequest(request, reply, traceId, function);
        cost = static_cast<long long>(WallClock::NowMillis() - start);
    }
    if (status != SEND_OK) {
        NB_LOGE("send request failed, request:%{public}s, cost:%{public}lld ms, error code:%{public}d", traceId.c_str(),
            cost, status);
    } else {
        NB_LOGI("recv data request:%{public}s, function:%{public}s, cost:%{public}lld ms,", traceId.c_str(),
            function.c_str(), cost);
    }
    return status;
}

void DriveServiceProxy::BeginRequest()
{
    std::unique_lock<ffrt::mutex> lock(slotMutex_);
    disconnected_.wait(lock, [this]() { return !isDisconnecting_; });
    ++requestsUnderWay_;
}

void DriveServiceProxy::EndRequest()
{
    std::lock_guard<ffrt::mutex> lock(slotMutex_);
    --requestsUnderWay_;
}

bool DriveServiceProxy::EnsureConnected()
{
    if (ipcConnect_ == nullptr) {
        return false;
    }
    if (!ipcConnect_->IsConnected()) {
        ConnectService();
    }
    return ipcConnect_->IsConnected();
}

void DriveServiceProxy::TakeSlot()
{
    std::unique_lock<ffrt::mutex> lock(slotMutex_);
    if (UrgentScope::IsInside()) {
        AwaitUrgentSlot(lock);
    } else {
        slotFreed_.wait(lock, [this]() { return requestsInFlight_ < static_cast<uint32_t>(maxRequests_); });
    }
    ++requestsInFlight_;
}

// Ends also when nothing comes back: by way of the service, all that are in flight may wait for the one that waits here.
void DriveServiceProxy::AwaitUrgentSlot(std::unique_lock<ffrt::mutex> &lock)
{
    const auto hasRoom = [this]() { return requestsInFlight_ < MAX_URGENT_IN_FLIGHT; };
    uint64_t returned = 0;
    do {
        returned = slotsReturned_;
    } while (!urgentSlotFreed_.wait_for(lock, STANDSTILL, hasRoom) && returned != slotsReturned_);
}

void DriveServiceProxy::ReturnSlot()
{
    {
        std::lock_guard<ffrt::mutex> lock(slotMutex_);
        --requestsInFlight_;
        ++slotsReturned_;
    }
    // Without the mutex, or whoever is woken would wait for it at once.
    slotFreed_.notify_one();
    urgentSlotFreed_.notify_one();
}

bool DriveServiceProxy::IsSupportAsync(const std::string &function)
{
    const int32_t version = abilityVersion_;
    if (version < LEAST_ASYNC_VERSION) {
        return false;
    }
    const auto leastVersion = AsyncFunctions().find(function);
    if (leastVersion == AsyncFunctions().end()) {
        return false;
    }
    const auto config = SysConfig::GetInstance(userId_);
    if (config == nullptr) {
        NB_LOGE("get sys config failed, will not use async ipc");
        return false;
    }
    return config->GetUseAsyncIpc() && version >= leastVersion->second;
}

int32_t DriveServiceProxy::InnerSyncRequest(
    Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function)
{
    OHOS::MessageParcel data;
    OHOS::MessageParcel replyParcel;
    OHOS::MessageOption option;
    data.WriteInterfaceToken(descriptor_);
    MessageParcelUtil::WriteStringToMessage(data, JsonHelper::JsonToString(request));
    if (NeedsCallback(function)) {
        data.WriteRemoteObject(callbackStub_);
    }
    NB_LOGI("send data request:%{public}s, function:%{public}s", traceId.c_str(), function.c_str());
    const int32_t result = ipcConnect_->SendData(SYNC_REQUEST, data, replyParcel, option);
    if (result == SEND_OK) {
        const int32_t serviceResult = replyParcel.ReadInt32();
        reply = MessageParcelUtil::ReadStringFromMessage(replyParcel);
        if (serviceResult != 0) {
            NB_LOGI("request:%{public}s, data:%{public}s", traceId.c_str(), reply.c_str());
        }
    }
    return result;
}

int32_t DriveServiceProxy::InnerAsyncRequest(
    Json::Value &request, std::string &reply, const std::string &traceId, const std::string &function, int timeout)
{
    if (callbackStub_ == nullptr) {
        NB_LOGE("async request failed, ");
        return SEND_NO_CALLBACK;
    }
    OHOS::MessageParcel data;
    OHOS::MessageParcel replyParcel;
    OHOS::MessageOption option;
    data.WriteInterfaceToken(descriptor_);
    const std::string uuid = UuidHelper::GenerateUuid();
    request["uuid"] = uuid;
    MessageParcelUtil::WriteStringToMessage(data, JsonHelper::JsonToString(request));
    data.WriteRemoteObject(callbackStub_);
    NB_LOGI("send data async request:%{public}s, uuid:%{public}s, function:%{public}s", traceId.c_str(), uuid.c_str(),
        function.c_str());
    // Before sending, or a fast reply would find nobody waiting.
    callbackStub_->AddRequest(uuid);
    const int32_t result = ipcConnect_->SendData(ASYNC_REQUEST, data, replyParcel, option);
    if (result != SEND_OK) {
        callbackStub_->RemoveRequest(uuid);
        NB_LOGE("send async request failed, request:%{public}s, error code:%{public}d", traceId.c_str(), result);
        return result;
    }
    return callbackStub_->WaitRequestReply(uuid, reply, timeout);
}
} // namespace Nubis
