// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "wire_acceptor.h"

#include <algorithm>
#include <poll.h>
#include <utility>
#include <vector>

#include "ipc_limits.h"
#include "ipc_log.h"
#include "lane_loop.h"
#include "unix_socket.h"

namespace Host::Ipc {

WireAcceptor::WireAcceptor(Finder finder, std::function<void()> onChange, int expectedUid)
    : finder_(std::move(finder)), onChange_(std::move(onChange)), expectedUid_(expectedUid)
{}

void WireAcceptor::Accept(UniqueFd socket)
{
    CallingPeer peer;
    if (!GetPeer(socket.Get(), peer.pid, peer.uid) || peer.uid != expectedUid_) {
        IPC_LOGE("process %{public}d of user %{public}d is refused", peer.pid, peer.uid);
        return;
    }
    // The lane's thread may be as far as Join before Start returns; the lock makes it wait.
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) {
        return;
    }
    MakeRoom(peer.pid);
    if (auto lane = Lane::Start(std::move(socket), LaneKind::SMALL, {}, shared_from_this())) {
        newcomers_.emplace(lane, Newcomer{peer, nextNumber_++});
    }
}

void WireAcceptor::MakeRoom(int pid)
{
    // One process that says nothing pushes out its own connections before those of others.
    CloseOldest(MAX_NEWCOMERS_OF_PROCESS, [pid](const Newcomer &newcomer) { return newcomer.peer.pid == pid; });
    CloseOldest(MAX_NEWCOMERS, [](const Newcomer &) { return true; });
}

template <typename Counts>
void WireAcceptor::CloseOldest(size_t most, const Counts &counts)
{
    size_t counted = 0;
    auto oldest = newcomers_.end();
    for (auto entry = newcomers_.begin(); entry != newcomers_.end(); ++entry) {
        if (counts(entry->second)) {
            ++counted;
            oldest = oldest == newcomers_.end() || entry->second.number < oldest->second.number ? entry : oldest;
        }
    }
    if (counted >= most) {
        oldest->first->Close();
        newcomers_.erase(oldest);
    }
}

bool WireAcceptor::HasRoomFor(int pid) const
{
    auto ofProcess = std::count_if(
        sessions_.begin(), sessions_.end(), [pid](const auto &entry) { return entry.second->Peer().pid == pid; });
    if (sessions_.size() < MAX_SESSIONS && static_cast<size_t>(ofProcess) < MAX_SESSIONS_OF_PROCESS) {
        return true;
    }
    IPC_LOGE("process %{public}d is refused: there are %{public}zu sessions, %{public}zu of them its own", pid,
        sessions_.size(), static_cast<size_t>(ofProcess));
    return false;
}

size_t WireAcceptor::SessionCount() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return sessions_.size();
}

bool WireAcceptor::IsFinishing() const
{
    return finishing_;
}

// The two connections of a session end one after the other, so all of them must be idle before the first one is closed.
// Twice: an answer may go from one to the other between the looks at both, but then it shows the next time.
bool WireAcceptor::FinishAnswers(std::chrono::milliseconds atMost)
{
    constexpr int roundMilliseconds = 5;
    finishing_ = true;
    const auto end = std::chrono::steady_clock::now() + atMost;
    bool wasIdle = false;
    do {
        auto idle = std::make_shared<std::atomic<size_t>>(0);
        size_t asked = 0;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            for (const auto &entry : sessions_) {
                for (LaneKind kind : {LaneKind::SMALL, LaneKind::BIG}) {
                    auto lane = entry.second->GetLane(kind);
                    bool isAsked =
                        lane != nullptr && lane->Post([idle](LaneLoop &loop) { *idle += loop.IsIdle() ? 1 : 0; });
                    asked += isAsked ? 1 : 0;
                }
            }
        }
        if (asked == 0) {
            return true;
        }
        poll(nullptr, 0, roundMilliseconds);
        const bool isIdle = *idle == asked;
        if (isIdle && wasIdle) {
            return true;
        }
        wasIdle = isIdle;
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

void WireAcceptor::Close()
{
    std::vector<std::shared_ptr<WireSession>> sessions;
    std::vector<std::shared_ptr<Lane>> lanes;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        for (auto &entry : sessions_) {
            sessions.push_back(entry.second);
        }
        for (auto &entry : newcomers_) {
            lanes.push_back(entry.first);
        }
    }
    for (auto &session : sessions) {
        session->Die();
    }
    for (auto &lane : lanes) {
        lane->Close();
    }
}

std::shared_ptr<WireSession> WireAcceptor::Join(
    const std::string &key, LaneKind kind, const std::string &deviceName, const std::shared_ptr<Lane> &lane)
{
    std::shared_ptr<WireSession> session;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto newcomer = newcomers_.find(lane);
        auto known = sessions_.find(key);
        if (closed_ || newcomer == newcomers_.end() || (known == sessions_.end()) != (kind == LaneKind::SMALL)) {
            return nullptr;
        }
        CallingPeer peer = newcomer->second.peer;
        peer.deviceName = deviceName;
        if (kind == LaneKind::SMALL) {
            if (!HasRoomFor(peer.pid)) {
                return nullptr;
            }
            session = std::make_shared<WireSession>(peer, false);
        } else if (known->second->Peer().pid == peer.pid && known->second->GetLane(kind) == nullptr) {
            session = known->second;
        } else {
            return nullptr;
        }
        newcomers_.erase(newcomer);
        session->SetLane(kind, lane);
        lane->Adopt(kind, session);
        sessions_[key] = session;
    }
    if (session->IsDead()) {
        // It may have closed its lanes before it had this one.
        lane->Close();
    }
    if (kind == LaneKind::SMALL) {
        session->OnDeath([self = shared_from_this(), key] { self->Remove(key); });
        onChange_();
    }
    return session;
}

OHOS::sptr<OHOS::IRemoteObject> WireAcceptor::FindAbility(
    const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    return finder_(bundleName, abilityName, userId);
}

void WireAcceptor::OnClosed(const std::shared_ptr<Lane> &lane)
{
    std::lock_guard<std::mutex> lock(mutex_);
    newcomers_.erase(lane);
}

void WireAcceptor::Remove(const std::string &key)
{
    std::shared_ptr<WireSession> session;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = sessions_.find(key);
        if (found == sessions_.end()) {
            return;
        }
        session = std::move(found->second);
        sessions_.erase(found);
    }
    onChange_();
}

} // namespace Host::Ipc
