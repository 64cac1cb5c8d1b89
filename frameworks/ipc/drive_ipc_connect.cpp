// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_ipc_connect.h"

#include <chrono>
#include <new>
#include <utility>

#include "drive_service_proxy.h"
#include "errors.h"
#include "ffrt_inner.h"
#include "log.h"

namespace Nubis {
namespace {
constexpr std::chrono::seconds CONNECT_TIMEOUT(5);

void SendHello(const std::shared_ptr<ProxyLink> &link)
{
    const ProxyLink::Access proxy(link);
    if (proxy) {
        proxy->SendHelloToCloud();
    }
}
} // namespace

DriveIpcConnect::DriveIpcConnect(std::shared_ptr<ProxyLink> link) : link_(std::move(link))
{
    deathRecipient_ = new (std::nothrow) ServiceDeathRecipient(this);
    if (deathRecipient_ == nullptr) {
        NB_LOGE("new service death recipient fail");
    }
}

void DriveIpcConnect::OnAbilityConnectDone(
    const OHOS::AppExecFwk::ElementName &element, const OHOS::sptr<OHOS::IRemoteObject> &remoteObject, int resultCode)
{
    if (resultCode != 0) {
        NB_LOGE("ability connect failed, error code:%{public}d", resultCode);
        return;
    }
    NB_LOGI("ability connect success, ability name:%{public}s", element.GetAbilityName().c_str());
    {
        std::lock_guard<std::mutex> lock(mutex_);
        remoteObject_ = remoteObject;
        if (remoteObject_ != nullptr && deathRecipient_ != nullptr) {
            remoteObject_->AddDeathRecipient(deathRecipient_);
            NB_LOGI("Add death recipient success");
        }
    }
    connected_.notify_one();
    ffrt::thread(SendHello, link_).detach();
}

void DriveIpcConnect::OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int resultCode)
{
    NB_LOGI("ability disconnect");
    if (resultCode != 0) {
        NB_LOGE("ability disconnect failed, error code:%{public}d", resultCode);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const bool isLate = std::exchange(isDisconnectDue_, false) && resultCode != 0;
    if (!isLate) {
        DropRemoteObject();
    }
}

void DriveIpcConnect::OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &died)
{
    NB_LOGI("receive service died ability will disconnect");
    std::lock_guard<std::mutex> lock(mutex_);
    if (died.GetRefPtr() != nullptr && died.promote() != remoteObject_) {
        return;
    }
    isDisconnectDue_ = remoteObject_ != nullptr;
    DropRemoteObject();
}

// With mutex_ held: a request that found the object here is either woken now or sent when it is gone.
void DriveIpcConnect::DropRemoteObject()
{
    if (remoteObject_ != nullptr && deathRecipient_ != nullptr) {
        remoteObject_->RemoveDeathRecipient(deathRecipient_);
        NB_LOGI("Remove death recipient success");
    }
    remoteObject_ = nullptr;
    const ProxyLink::Access proxy(link_);
    if (proxy) {
        proxy->WakeAllRequests();
    }
}

bool DriveIpcConnect::IsConnected()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return remoteObject_ != nullptr;
}

void DriveIpcConnect::WaitIpcConnect()
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!connected_.wait_for(lock, CONNECT_TIMEOUT, [this]() { return remoteObject_ != nullptr; })) {
        NB_LOGE("wait ipc connect failed, timeout");
    }
}

int32_t DriveIpcConnect::SendData(
    uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option)
{
    OHOS::sptr<OHOS::IRemoteObject> remoteObject;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        remoteObject = remoteObject_;
    }
    if (remoteObject == nullptr) {
        return NOT_CONNECTED;
    }
    const int32_t result = remoteObject->SendRequest(code, data, reply, option);
    if (result == OHOS::ERR_DEAD_OBJECT) {
        // An object that was dead when it was handed over never tells of its death.
        OnRemoteDied(remoteObject);
    }
    return result;
}
} // namespace Nubis
