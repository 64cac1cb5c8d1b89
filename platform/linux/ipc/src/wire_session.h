// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_WIRE_SESSION_H
#define HOST_IPC_WIRE_SESSION_H

#include <cstddef>
#include <cstdint>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "lane.h"
#include "session.h"

namespace Host::Ipc {

class WireSession;

// A far object as the lanes of a session know it: each lane keeps its own reference under `key`. The end of the last one
// releases the object at the far end. Any thread.
class WireReference {
public:
    WireReference(std::weak_ptr<WireSession> session, uint64_t id);
    ~WireReference();
    WireReference(const WireReference &) = delete;
    WireReference &operator=(const WireReference &) = delete;

    uint64_t Id() const
    {
        return id_;
    }
    uint64_t Key() const
    {
        return key_;
    }

private:
    const std::weak_ptr<WireSession> session_;
    const uint64_t id_;
    const uint64_t key_;
};

// A session with another process: two connections, so that small parcels never wait behind a large one. When one breaks
// the session is dead.
class WireSession : public Session {
public:
    // Parcels above this many bytes take the lane for large ones.
    static constexpr size_t BIG_PARCEL = size_t{64} * 1024;

    // Connects to the ability that listens at `path`, which a process of `expectedUid` must serve, with the lane for small
    // parcels. GetAbility tells whether the process answers. On failure null with a text; `nobody` tells that no process
    // serves there (any more).
    static std::shared_ptr<WireSession> Connect(
        const std::string &path, int expectedUid, std::string &error, bool &nobody);

    WireSession(CallingPeer peer, bool closeUnused);
    ~WireSession() override;

    // The ability that the far end offers; null with a text when there is none, or the far end does not answer in a few
    // seconds. One thread at a time.
    OHOS::sptr<OHOS::IRemoteObject> GetAbility(
        const std::string &bundleName, const std::string &abilityName, int32_t userId, std::string &error);

    // Opens the lane for large parcels beside what the caller does next; once, later calls do nothing. Without it they take
    // the other one.
    void OpenBigLane(const std::string &path);

    void SetLane(LaneKind kind, const std::shared_ptr<Lane> &lane);
    // Null when it has not joined yet.
    std::shared_ptr<Lane> GetLane(LaneKind kind) const;
    // Waits for a lane that is being opened, until the session is dead at the latest.
    std::shared_ptr<Lane> AwaitLane(LaneKind kind);
    // Keeps a large reply until the far end fetches it from the other lane. 0, with nothing kept, when the far end leaves
    // MAX_UNREAD_BYTES of them.
    uint64_t Defer(WireParcel &&reply);
    bool HasDeferred() const;
    // False for an unknown ticket.
    bool TakeDeferred(uint64_t ticket, WireParcel &reply);

protected:
    void Send(const ProxyTarget &target, uint32_t code, int flags, WireParcel &&data,
        const std::shared_ptr<PendingCall> &call) override;
    void CloseTransport() override;

private:
    // Null when the lane cannot join. The far end answers in the order of what a lane sends, so that only who wants to know
    // has to wait.
    std::shared_ptr<PendingCall> StartJoining(LaneKind kind, UniqueFd socket);
    bool AwaitJoined(const std::shared_ptr<PendingCall> &joining);
    std::string NoAnswer() const;
    void JoinBigLane(const std::string &path);

    std::string key_;                      // of a session that connected; constant from then on
    std::shared_ptr<PendingCall> joining_; // the first one, until somebody has waited for it
    mutable std::mutex mutex_;
    std::condition_variable laneSet_;
    // Guarded by mutex_.
    std::shared_ptr<Lane> lanes_[2];
    bool isBigLaneAsked_ = false;
    bool isBigLaneDue_ = false;
    std::unordered_map<uint64_t, WireParcel> deferred_;
    size_t deferredBytes_ = 0;
    uint64_t nextTicket_ = 1;
};

} // namespace Host::Ipc

#endif // HOST_IPC_WIRE_SESSION_H
