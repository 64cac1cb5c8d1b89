// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LANE_H
#define HOST_IPC_LANE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "unique_fd.h"
#include "wire_parcel.h"

namespace Host::Ipc {

class Lane;
class LaneLoop;
class WireSession;

// Which parcels a connection carries.
enum class LaneKind : uint16_t {
    SMALL = 0,
    BIG = 1
};

// What the accepting end does for a peer that has just connected. Called on the lane's thread; must not block.
class LaneHost {
public:
    virtual ~LaneHost() = default;
    // The session that the lane belongs to from now on; null refuses the peer.
    virtual std::shared_ptr<WireSession> Join(
        const std::string &key, LaneKind kind, const std::string &deviceName, const std::shared_ptr<Lane> &lane) = 0;
    virtual OHOS::sptr<OHOS::IRemoteObject> FindAbility(
        const std::string &bundleName, const std::string &abilityName, int32_t userId) = 0;
    // Whether no more requests are taken.
    virtual bool IsFinishing() const = 0;
    // The lane is closed. It may never have joined a session.
    virtual void OnClosed(const std::shared_ptr<Lane> &lane) = 0;
};

// One connection to another process and the thread that serves it. All of the transport lives on that thread; other
// threads reach it by posting. Kept alive by its own thread until the connection is closed and nothing refers to data of
// it any more. Any thread.
class Lane : public std::enable_shared_from_this<Lane> {
public:
    using Job = std::function<void(LaneLoop &)>;

    // The connecting end gives its session, the accepting end a host. Null when there is no thread.
    static std::shared_ptr<Lane> Start(
        UniqueFd socket, LaneKind kind, std::weak_ptr<WireSession> session, std::shared_ptr<LaneHost> host);

    // Starts a lane that ends by itself: the first one of a process takes longer than all others, because the code that
    // it needs is loaded and bound meanwhile.
    static void WarmUp();

    // Use Start.
    Lane(LaneKind kind, std::weak_ptr<WireSession> session, std::shared_ptr<LaneHost> host, UniqueFd wake);

    // Runs `job` soon on the lane's thread, in the order of posting. False, with the job dropped, when the lane has ended.
    bool Post(Job job);
    // Ends the connection; calls under way fail.
    void Close();

    std::shared_ptr<WireSession> GetSession() const;
    LaneKind Kind() const;
    const std::shared_ptr<LaneHost> &Host() const
    {
        return host_;
    }
    // Once, by the accepting end.
    void Adopt(LaneKind kind, const std::shared_ptr<WireSession> &session);

    // For the loop.
    int WakeFd() const
    {
        return wake_.Get();
    }
    std::vector<Job> TakeJobs();

private:
    void Serve(UniqueFd socket);
    void End();

    const std::shared_ptr<LaneHost> host_;
    const UniqueFd wake_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    LaneKind kind_;
    std::weak_ptr<WireSession> session_;
    std::vector<Job> jobs_;
    bool ended_ = false;
};

} // namespace Host::Ipc

#endif // HOST_IPC_LANE_H
