// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_ipc_connect.h"

#include <chrono>
#include <new>
#include <utility>

#include "drive_service_proxy.h"
#include "errors.h"
#include "log.h"

namespace Nubis {
namespace {
constexpr std::chrono::seconds CONNECT_TIMEOUT(5);
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
        std::lock_guard<ffrt::mutex> lock(changeMutex_);
        const auto replaced = GetRemoteObject();
        if (replaced != nullptr && replaced != remoteObject) {
            // Its end, when it is heard of now, is too late to end what waits for it.
            DropRemoteObject();
        }
        SetRemoteObject(remoteObject);
        if (remoteObject != nullptr && deathRecipient_ != nullptr) {
            remoteObject->AddDeathRecipient(deathRecipient_);
            NB_LOGI("Add death recipient success");
        }
    }
    changed_.notify_one();
    const ProxyLink::Access proxy(link_);
    if (proxy) {
        proxy->StartGreeting(true);
    }
}

void DriveIpcConnect::OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int resultCode)
{
    NB_LOGI("ability disconnect");
    if (resultCode != 0) {
        NB_LOGE("ability disconnect failed, error code:%{public}d", resultCode);
    }
    std::lock_guard<ffrt::mutex> lock(changeMutex_);
    const bool isLate = std::exchange(isDisconnectDue_, false) && resultCode != 0;
    if (!isLate) {
        DropRemoteObject();
    }
}

void DriveIpcConnect::OnRemoteDied(const OHOS::wptr<OHOS::IRemoteObject> &died)
{
    NB_LOGI("receive service died ability will disconnect");
    std::lock_guard<ffrt::mutex> lock(changeMutex_);
    const auto remoteObject = GetRemoteObject();
    if (died.GetRefPtr() != nullptr && died.promote() != remoteObject) {
        return;
    }
    isDisconnectDue_ = remoteObject != nullptr;
    DropRemoteObject();
}

// With changeMutex_ held.
void DriveIpcConnect::DropRemoteObject()
{
    const auto remoteObject = GetRemoteObject();
    if (remoteObject != nullptr && deathRecipient_ != nullptr) {
        remoteObject->RemoveDeathRecipient(deathRecipient_);
        NB_LOGI("Remove death recipient success");
    }
    SetRemoteObject(nullptr);
    changed_.notify_all();
    const ProxyLink::Access proxy(link_);
    if (proxy) {
        proxy->WakeAllRequests();
    }
}

OHOS::sptr<OHOS::IRemoteObject> DriveIpcConnect::GetRemoteObject()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return remoteObject_;
}

// With changeMutex_ held.
void DriveIpcConnect::SetRemoteObject(const OHOS::sptr<OHOS::IRemoteObject> &remoteObject)
{
    // Ends after unlocking, because the end of the last reference may be long.
    OHOS::sptr<OHOS::IRemoteObject> replaced;
    std::lock_guard<std::mutex> lock(mutex_);
    replaced = remoteObject_;
    remoteObject_ = remoteObject;
    hasConnected_ = hasConnected_ || remoteObject != nullptr;
}

bool DriveIpcConnect::IsConnected()
{
    return GetRemoteObject() != nullptr;
}

void DriveIpcConnect::ExpectConnect()
{
    std::lock_guard<std::mutex> lock(mutex_);
    hasConnected_ = false;
}

void DriveIpcConnect::WaitIpcConnect()
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, CONNECT_TIMEOUT, [this]() { return remoteObject_ != nullptr || hasConnected_; })) {
        NB_LOGE("wait ipc connect failed, timeout");
    }
    hasConnected_ = false;
}

void DriveIpcConnect::WaitIpcDisconnect()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, CONNECT_TIMEOUT, [this]() { return remoteObject_ == nullptr; });
}

int32_t DriveIpcConnect::SendData(
    uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option)
{
    const auto remoteObject = GetRemoteObject();
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
