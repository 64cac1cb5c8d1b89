// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "session.h"

#include <exception>
#include <thread>
#include <utility>

#include "calling_scope.h"
#include "driver_result.h"
#include "errors.h"
#include "fault_injector.h"
#include "ipc_log.h"
#include "ipc_types.h"
#include "parcel_codec.h"
#include "worker_pool.h"

namespace Host::Ipc {

using OHOS::IPCObjectProxy;
using OHOS::IRemoteObject;
using OHOS::MessageOption;
using OHOS::MessageParcel;
using OHOS::sptr;

// What the far end holds of one export; as many as it has references.
class Session::ExportHold {
public:
    ExportHold(std::weak_ptr<Session> session, uint64_t id) : session_(std::move(session)), id_(id)
    {}
    ~ExportHold()
    {
        if (auto session = session_.lock()) {
            session->ReleaseExport(id_);
        }
    }
    ExportHold(const ExportHold &) = delete;
    ExportHold &operator=(const ExportHold &) = delete;

private:
    const std::weak_ptr<Session> session_;
    const uint64_t id_;
};

Session::Session(CallingPeer peer, bool closeUnused) : peer_(std::move(peer)), closeUnused_(closeUnused)
{}

Session::~Session() = default;

bool Session::IsDead() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return dead_;
}

bool Session::IsCalling() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return !calls_.empty();
}

void Session::Die()
{
    decltype(exports_) exports;
    decltype(calls_) calls;
    decltype(watchers_) watchers;
    std::vector<sptr<IPCObjectProxy>> proxies;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (dead_) {
            return;
        }
        dead_ = true;
        exports.swap(exports_);
        exportIds_.clear();
        calls.swap(calls_);
        watchers.swap(watchers_);
        for (auto &entry : imports_) {
            proxies.push_back(entry.second.promote());
        }
    }
    CloseTransport();
    for (auto &call : calls) {
        call.second->Complete(BR_DEAD_REPLY);
    }
    auto &pool = WorkerPool::Get();
    for (auto &proxy : proxies) {
        if (proxy != nullptr) {
            pool.Post([proxy] { proxy->NotifyDeath(); });
        }
    }
    for (auto &watcher : watchers) {
        pool.Post(std::move(watcher));
    }
    // Objects end where their destructors may take their time, and so do proxies, of which this may be the last reference.
    pool.Post([gone = std::make_shared<decltype(exports)>(std::move(exports)), last = std::move(proxies)] {});
}

void Session::OnDeath(std::function<void()> watcher)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!dead_) {
            watchers_.push_back(std::move(watcher));
            return;
        }
    }
    WorkerPool::Get().Post(std::move(watcher));
}

std::shared_ptr<void> Session::AcquireUse()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) {
        return nullptr;
    }
    std::shared_ptr<void> use = use_.lock();
    if (use == nullptr && !used_) {
        used_ = true;
        use = std::shared_ptr<void>(this, [weak = weak_from_this()](void *) {
            if (auto session = weak.lock(); session != nullptr && session->closeUnused_) {
                WorkerPool::Get().Post([session] { session->Die(); });
            }
        });
        use_ = use;
    }
    return use;
}

int Session::Transact(const ProxyTarget &target, uint32_t code, MessageParcel &data, MessageParcel &reply, int flags)
{
    if (IsDead()) {
        return OHOS::ERR_DEAD_OBJECT;
    }
    FaultDraw fault = FaultInjector::Draw(code);
    if (fault.kind == Fault::DELAY) {
        std::this_thread::sleep_for(fault.delay);
    } else if (fault.kind == Fault::SEND_FAILURE) {
        return BR_FAILED_REPLY;
    } else if (fault.kind == Fault::DEATH_BEFORE) {
        Die();
        return BR_DEAD_REPLY;
    }
    WireParcel wire;
    if (!ParcelCodec::Pack(data, *this, wire)) {
        return BR_FAILED_REPLY;
    }
    auto call = std::make_shared<PendingCall>();
    if (!Track(call)) {
        return OHOS::ERR_DEAD_OBJECT;
    }
    Send(target, code, flags, std::move(wire), call);
    if (fault.kind == Fault::DEATH_DURING) {
        Die();
    }
    if ((flags & MessageOption::TF_ASYNC) != 0) {
        Untrack(call);
        return OHOS::ERR_NONE;
    }
    int result = 0;
    WireParcel answer;
    int status = call->Wait(result, answer);
    Untrack(call);
    if (fault.kind == Fault::DEATH_AFTER) {
        Die();
    } else if (fault.kind == Fault::DEATH_DURING) {
        // Also when the reply was faster.
        return BR_DEAD_REPLY;
    }
    if (status != 0) {
        return status;
    }
    if (fault.kind == Fault::LOST_REPLY) {
        return BR_FAILED_REPLY;
    }
    FaultInjector::Spoil(fault, answer);
    bool empty = answer.Empty();
    if (!ParcelCodec::Unpack(std::move(answer), *this, reply)) {
        return BR_FAILED_REPLY;
    }
    return empty ? result : OHOS::ERR_NONE;
}

bool Session::Track(const std::shared_ptr<PendingCall> &call)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) {
        return false;
    }
    calls_.emplace(call.get(), call);
    return true;
}

void Session::Untrack(const std::shared_ptr<PendingCall> &call)
{
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.erase(call.get());
}

void Session::Dispatch(sptr<IRemoteObject> target, uint32_t code, int flags, WireParcel &&data, Answer answer)
{
    auto request = std::make_shared<WireParcel>(std::move(data));
    WorkerPool::Get().Post([self = shared_from_this(), target = std::move(target), code, flags, request,
                               answer = std::move(answer)]() mutable {
        int result = OHOS::ERR_TRANSACTION_FAILED;
        WireParcel reply;
        self->Handle(target, code, flags, std::move(*request), result, reply);
        target.clear();
        if ((flags & MessageOption::TF_ASYNC) != 0) {
            reply = WireParcel();
        }
        answer(result, std::move(reply));
    });
}

void Session::Handle(
    const sptr<IRemoteObject> &target, uint32_t code, int flags, WireParcel &&data, int &result, WireParcel &reply)
{
    MessageParcel dataParcel;
    MessageParcel replyParcel;
    MessageOption option(flags);
    CallingScope scope(peer_);
    if (!ParcelCodec::Unpack(std::move(data), *this, dataParcel)) {
        return;
    }
    try {
        result = target->SendRequest(code, dataParcel, replyParcel, option);
    } catch (const std::exception &error) {
        IPC_LOGE("the handler of request %{public}u threw: %{public}s", code, error.what());
        return;
    } catch (...) {
        IPC_LOGE("the handler of request %{public}u threw", code);
        return;
    }
    if (!ParcelCodec::Pack(replyParcel, *this, reply)) {
        result = OHOS::ERR_TRANSACTION_FAILED;
    }
}

WireObject Session::Export(const sptr<IRemoteObject> &object)
{
    WireObject wire;
    wire.descriptor = object->GetObjectDescriptor();
    if (object->IsProxyObject()) {
        auto *proxy = dynamic_cast<IPCObjectProxy *>(object.GetRefPtr());
        if (proxy != nullptr && proxy->target_ != nullptr && proxy->target_->session.get() == this) {
            wire.kind = WireObject::Kind::HOME;
            wire.id = proxy->target_->id;
            wire.hold = proxy->target_->reference;
            return wire;
        }
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) {
        return wire;
    }
    auto known = exportIds_.find(object.GetRefPtr());
    wire.id = known != exportIds_.end() ? known->second : nextExport_++;
    ExportEntry &entry = exports_[wire.id];
    if (entry.holds++ == 0) {
        entry.object = object;
        exportIds_.emplace(object.GetRefPtr(), wire.id);
    }
    wire.hold = std::make_shared<ExportHold>(weak_from_this(), wire.id);
    return wire;
}

std::shared_ptr<void> Session::HoldExport(uint64_t id)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = exports_.find(id);
    if (found == exports_.end()) {
        return nullptr;
    }
    ++found->second.holds;
    return std::make_shared<ExportHold>(weak_from_this(), id);
}

sptr<IRemoteObject> Session::FindExport(uint64_t id)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = exports_.find(id);
    return found == exports_.end() ? nullptr : found->second.object;
}

void Session::ReleaseExport(uint64_t id)
{
    sptr<IRemoteObject> object;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = exports_.find(id);
        if (found == exports_.end() || --found->second.holds > 0) {
            return;
        }
        object = std::move(found->second.object);
        exportIds_.erase(object.GetRefPtr());
        exports_.erase(found);
    }
    // The object may end here, and its destructor may do anything: not in the thread of a connection.
    WorkerPool::Get().Post([object = std::move(object)] {});
}

sptr<IRemoteObject> Session::Import(WireObject &object)
{
    if (object.kind == WireObject::Kind::HOME) {
        return object.object != nullptr ? object.object : FindExport(object.id);
    }
    if (object.kind != WireObject::Kind::EXPORTED || object.hold == nullptr) {
        return nullptr;
    }
    // Taken first: AcquireUse has the same lock.
    std::shared_ptr<void> use = closeUnused_ ? AcquireUse() : nullptr;
    sptr<IPCObjectProxy> proxy;
    bool dead = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto &known = imports_[object.id];
        proxy = known.promote();
        if (proxy != nullptr) {
            return proxy;
        }
        auto target = std::make_unique<ProxyTarget>();
        target->session = shared_from_this();
        target->use = std::move(use);
        target->id = object.id;
        target->reference = std::move(object.hold);
        proxy = new IPCObjectProxy(std::move(target), object.descriptor);
        known = proxy;
        dead = dead_;
    }
    if (dead) {
        proxy->NotifyDeath();
    }
    return proxy;
}

void Session::Forget(uint64_t id, const IPCObjectProxy *proxy)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = imports_.find(id);
    if (found != imports_.end() && found->second == proxy) {
        imports_.erase(found);
    }
}

} // namespace Host::Ipc
