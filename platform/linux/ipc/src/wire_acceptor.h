// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_WIRE_ACCEPTOR_H
#define HOST_IPC_WIRE_ACCEPTOR_H

#include <cstddef>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "lane.h"
#include "wire_session.h"

namespace Host::Ipc {

// The accepting side of a service: pairs connections into sessions and hands out the ability. Any thread.
class WireAcceptor : public LaneHost, public std::enable_shared_from_this<WireAcceptor> {
public:
    using Finder = std::function<OHOS::sptr<OHOS::IRemoteObject>(const std::string &, const std::string &, int32_t)>;

    // `onChange` runs after a session has come or gone, on any thread, with no lock held; it must not block.
    WireAcceptor(Finder finder, std::function<void()> onChange, int expectedUid);

    // Serves a peer that has connected. One of another user is refused at once. How many there may be: ipc_limits.h.
    void Accept(UniqueFd socket);
    size_t SessionCount() const;
    // From now on takes requests only from those whom a call of this end waits for. Waits until what was taken is answered
    // and the answers are sent; false when that takes longer.
    bool FinishAnswers(std::chrono::milliseconds atMost);
    // Ends all sessions and accepts no more.
    void Close();

    std::shared_ptr<WireSession> Join(const std::string &key, LaneKind kind, const std::string &deviceName,
        const std::shared_ptr<Lane> &lane) override;
    OHOS::sptr<OHOS::IRemoteObject> FindAbility(
        const std::string &bundleName, const std::string &abilityName, int32_t userId) override;
    bool IsFinishing() const override;
    void OnClosed(const std::shared_ptr<Lane> &lane) override;

private:
    // Connected, but of no session yet.
    struct Newcomer {
        CallingPeer peer;
        uint64_t number = 0;
    };

    void Remove(const std::string &key);
    // Called with the lock held: sends those away who have been silent for longest.
    void MakeRoom(int pid);
    // The one among those that `counts` holds for, when they are `most`.
    template <typename Counts>
    void CloseOldest(size_t most, const Counts &counts);
    // Called with the lock held.
    bool HasRoomFor(int pid) const;

    const Finder finder_;
    const std::function<void()> onChange_;
    const int expectedUid_;
    std::atomic<bool> finishing_{false};

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    bool closed_ = false;
    std::map<std::string, std::shared_ptr<WireSession>> sessions_;
    std::map<std::shared_ptr<Lane>, Newcomer> newcomers_;
    uint64_t nextNumber_ = 1;
};

} // namespace Host::Ipc

#endif // HOST_IPC_WIRE_ACCEPTOR_H
