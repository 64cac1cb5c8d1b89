// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "loopback_session.h"

#include "calling_scope.h"
#include "driver_result.h"
#include "ipc_types.h"
#include "worker_pool.h"

namespace Host::Ipc {

std::pair<std::shared_ptr<LoopbackSession>, std::shared_ptr<LoopbackSession>> LoopbackSession::MakePair()
{
    auto near = std::make_shared<LoopbackSession>(OwnPeer(), true);
    auto far = std::make_shared<LoopbackSession>(OwnPeer(), false);
    near->other_ = far;
    far->other_ = near;
    return {near, far};
}

LoopbackSession::LoopbackSession(CallingPeer peer, bool closeUnused) : Session(std::move(peer), closeUnused)
{}

WireObject LoopbackSession::ExportFarSide(const OHOS::sptr<OHOS::IRemoteObject> &object)
{
    auto other = other_.lock();
    return other == nullptr ? WireObject() : other->Export(object);
}

void LoopbackSession::Send(
    const ProxyTarget &target, uint32_t code, int flags, WireParcel &&data, const std::shared_ptr<PendingCall> &call)
{
    auto other = other_.lock();
    auto object = other == nullptr ? nullptr : other->FindExport(target.id);
    if (object == nullptr) {
        call->Complete(other == nullptr || other->IsDead() ? BR_DEAD_REPLY : BR_FAILED_REPLY);
        return;
    }
    other->Dispatch(object, code, flags, std::move(data),
        [call](int result, WireParcel &&reply) { call->Complete(OHOS::ERR_NONE, result, std::move(reply)); });
}

void LoopbackSession::CloseTransport()
{
    if (auto other = other_.lock()) {
        WorkerPool::Get().Post([other] { other->Die(); });
    }
}

} // namespace Host::Ipc
