// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LOOPBACK_SESSION_H
#define HOST_IPC_LOOPBACK_SESSION_H

#include <memory>
#include <utility>

#include "session.h"

namespace Host::Ipc {

// A session within one process: the two ends know each other's objects only through parcels, as two processes would.
class LoopbackSession : public Session {
public:
    // The end that connects, and the end where the ability lives. Each end refers to the other weakly: whoever connects
    // lasts as long as its proxies and connections, and the far end as long as `second` is kept.
    static std::pair<std::shared_ptr<LoopbackSession>, std::shared_ptr<LoopbackSession>> MakePair();

    LoopbackSession(CallingPeer peer, bool closeUnused);

    // An object of the far end as this end would receive it; empty when the far end is gone.
    WireObject ExportFarSide(const OHOS::sptr<OHOS::IRemoteObject> &object);

protected:
    void Send(const ProxyTarget &target, uint32_t code, int flags, WireParcel &&data,
        const std::shared_ptr<PendingCall> &call) override;
    void CloseTransport() override;

private:
    // Constant after MakePair.
    std::weak_ptr<LoopbackSession> other_;
};

} // namespace Host::Ipc

#endif // HOST_IPC_LOOPBACK_SESSION_H
