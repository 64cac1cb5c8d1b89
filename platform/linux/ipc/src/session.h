// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_SESSION_H
#define HOST_IPC_SESSION_H

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/calling_peer.h"
#include "ipc_object_proxy.h"
#include "pending_call.h"
#include "refbase.h"
#include "wire_parcel.h"

namespace Host::Ipc {

class Session;

// What a proxy refers to. The members end in reverse order: the session last.
struct ProxyTarget {
    std::shared_ptr<Session> session;
    // Keeps a session that nothing else uses from closing; see Session::AcquireUse.
    std::shared_ptr<void> use;
    uint64_t id = 0;
    // Keeps the far object; its end releases it there.
    std::shared_ptr<void> reference;
};

// One end of a conversation between two processes (or between two sides of one process): which objects of this end the
// far end knows (exports), which proxies of far objects exist here (imports), and which calls wait for a reply. How
// parcels travel is up to the derived class. Any thread; no callback runs under a lock.
//
// Life: alive from construction until Die, which is final. Then calls under way fail, exports are dropped, proxies call
// their death recipients.
class Session : public std::enable_shared_from_this<Session> {
public:
    // With `closeUnused` the session dies when the last use ends (the end that connected wants this).
    Session(CallingPeer peer, bool closeUnused);
    virtual ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    const CallingPeer &Peer() const
    {
        return peer_;
    }
    bool IsDead() const;
    // Whether a call to the far end waits for its reply.
    bool IsCalling() const;
    void Die();
    // Runs `watcher` once on an IPC thread after the death; soon, when the session is dead already.
    void OnDeath(std::function<void()> watcher);
    // Null when the session is dead or about to close.
    std::shared_ptr<void> AcquireUse();

    // The sender's side of a call: results as IRemoteObject::SendRequest describes.
    int Transact(
        const ProxyTarget &target, uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, int flags);

    using Answer = std::function<void(int result, WireParcel &&reply)>;
    // The receiver's side: handles the request on an IPC thread, then calls `answer` there, once.
    void Dispatch(OHOS::sptr<OHOS::IRemoteObject> target, uint32_t code, int flags, WireParcel &&data, Answer answer);

    // Tells the far end about an object: one hold on its export, or its own object coming home.
    WireObject Export(const OHOS::sptr<OHOS::IRemoteObject> &object);
    // Another hold on an export; null when the far end does not hold it.
    std::shared_ptr<void> HoldExport(uint64_t id);
    OHOS::sptr<OHOS::IRemoteObject> FindExport(uint64_t id);
    // The object that an entry of the far end stands for; null when there is none.
    OHOS::sptr<OHOS::IRemoteObject> Import(WireObject &object);
    // A proxy ends.
    void Forget(uint64_t id, const OHOS::IPCObjectProxy *proxy);

protected:
    // Sends a request and completes `call` when its reply has come or cannot come. Waits for no
    // far end's handler.
    virtual void Send(const ProxyTarget &target, uint32_t code, int flags, WireParcel &&data,
        const std::shared_ptr<PendingCall> &call) = 0;
    // The session is dead: let the far end know. Called once.
    virtual void CloseTransport() = 0;

    // From now on Die completes `call`. False, with nothing done, when the session is dead.
    bool Track(const std::shared_ptr<PendingCall> &call);
    void Untrack(const std::shared_ptr<PendingCall> &call);

private:
    class ExportHold;
    struct ExportEntry {
        OHOS::sptr<OHOS::IRemoteObject> object;
        size_t holds = 0;
    };

    void ReleaseExport(uint64_t id);
    void Handle(const OHOS::sptr<OHOS::IRemoteObject> &target, uint32_t code, int flags, WireParcel &&data, int &result,
        WireParcel &reply);

    const CallingPeer peer_;
    const bool closeUnused_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    bool dead_ = false;
    bool used_ = false;
    std::weak_ptr<void> use_;
    uint64_t nextExport_ = 1;
    std::unordered_map<uint64_t, ExportEntry> exports_;
    std::unordered_map<const OHOS::IRemoteObject *, uint64_t> exportIds_;
    std::unordered_map<uint64_t, OHOS::wptr<OHOS::IPCObjectProxy>> imports_;
    std::unordered_map<const PendingCall *, std::shared_ptr<PendingCall>> calls_;
    std::vector<std::function<void()>> watchers_;
};

} // namespace Host::Ipc

#endif // HOST_IPC_SESSION_H
