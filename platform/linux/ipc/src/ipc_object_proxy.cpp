// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ipc_object_proxy.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "driver_result.h"
#include "errors.h"
#include "ipc_log.h"
#include "ipc_types.h"
#include "session.h"

namespace OHOS {

IPCObjectProxy::IPCObjectProxy(int, std::u16string descriptor, int) : IRemoteObject(std::move(descriptor)), dead_(true)
{}

IPCObjectProxy::IPCObjectProxy(std::unique_ptr<Host::Ipc::ProxyTarget> target, std::u16string descriptor)
    : IRemoteObject(std::move(descriptor)), target_(std::move(target)), dead_(false)
{}

IPCObjectProxy::~IPCObjectProxy()
{
    if (target_ != nullptr) {
        target_->session->Forget(target_->id, this);
    }
}

bool IPCObjectProxy::IsProxyObject() const
{
    return true;
}

bool IPCObjectProxy::IsObjectDead() const
{
    if (target_ != nullptr && target_->session->IsDead()) {
        // The proxy itself may still have to hear of it.
        return true;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return dead_;
}

int32_t IPCObjectProxy::GetObjectRefCount()
{
    return GetSptrRefCount();
}

int IPCObjectProxy::SendRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option)
{
    if (target_ == nullptr || IsObjectDead()) {
        return ERR_DEAD_OBJECT;
    }
    // The reply may bring about that the caller drops its last reference to this proxy.
    sptr<IPCObjectProxy> self(this);
    try {
        return target_->session->Transact(*target_, code, data, reply, option.GetFlags());
    } catch (const std::exception &error) {
        IPC_LOGE("request %{public}u failed: %{public}s", code, error.what());
        return Host::Ipc::BR_FAILED_REPLY;
    }
}

bool IPCObjectProxy::AddDeathRecipient(const sptr<DeathRecipient> &recipient)
{
    if (recipient == nullptr) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) {
        return false;
    }
    recipients_.push_back(recipient);
    return true;
}

bool IPCObjectProxy::RemoveDeathRecipient(const sptr<DeathRecipient> &recipient)
{
    // Ends after the lock is given back: it may be the last reference.
    sptr<DeathRecipient> removed;
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = std::find(recipients_.begin(), recipients_.end(), recipient);
    if (found == recipients_.end()) {
        return false;
    }
    removed = *found;
    recipients_.erase(found);
    return true;
}

int IPCObjectProxy::Dump(int, const std::vector<std::u16string> &)
{
    return ERR_NONE;
}

void IPCObjectProxy::NotifyDeath()
{
    std::vector<sptr<DeathRecipient>> recipients;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (dead_) {
            return;
        }
        dead_ = true;
        recipients.swap(recipients_);
    }
    for (const auto &recipient : recipients) {
        try {
            recipient->OnRemoteDied(this);
        } catch (...) {
            // The others must hear of it too.
            continue;
        }
    }
}

} // namespace OHOS
