// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "wire_session.h"

#include <atomic>
#include <chrono>
#include <random>
#include <utility>

#include "driver_result.h"
#include "host/paths.h"
#include "ipc_limits.h"
#include "ipc_log.h"
#include "ipc_types.h"
#include "lane_loop.h"
#include "unix_socket.h"
#include "worker_pool.h"

namespace Host::Ipc {

namespace {

// Joining and finding the ability involve no handler of the far end.
constexpr std::chrono::milliseconds ANSWER_TIME(3000);
constexpr LaneKind LANES[] = {LaneKind::SMALL, LaneKind::BIG};

uint64_t NextKey()
{
    static std::atomic<uint64_t> next{1};
    return next++;
}

// Two connections with the same key make one session; nobody else may guess it.
std::string RandomKey()
{
    std::random_device device;
    std::string key;
    for (int i = 0; i < 4; ++i) {
        uint32_t part = device();
        key.append(reinterpret_cast<const char *>(&part), sizeof(part));
    }
    return key;
}

} // namespace

WireReference::WireReference(std::weak_ptr<WireSession> session, uint64_t id)
    : session_(std::move(session)), id_(id), key_(NextKey())
{}

WireReference::~WireReference()
{
    auto session = session_.lock();
    if (session == nullptr) {
        return;
    }
    for (LaneKind kind : LANES) {
        if (auto lane = session->GetLane(kind)) {
            lane->Post([key = key_](LaneLoop &loop) { loop.DropClient(key); });
        }
    }
}

std::shared_ptr<WireSession> WireSession::Connect(
    const std::string &path, int expectedUid, std::string &error, bool &nobody)
{
    nobody = false;
    UniqueFd first = ConnectSocket(path, error, nobody);
    CallingPeer peer;
    if (!first) {
        return nullptr;
    }
    if (!GetPeer(first.Get(), peer.pid, peer.uid) || peer.uid != expectedUid) {
        error = "the service at " + path + " belongs to another user";
        return nullptr;
    }
    peer.deviceName = DeviceName();
    auto session = std::make_shared<WireSession>(peer, true);
    session->key_ = RandomKey();
    session->joining_ = session->StartJoining(LaneKind::SMALL, std::move(first));
    if (session->joining_ != nullptr) {
        return session;
    }
    error = session->NoAnswer();
    // A service that ends just now takes its clients with it; the next attempt finds it gone.
    nobody = session->IsDead();
    session->Die();
    return nullptr;
}

std::string WireSession::NoAnswer() const
{
    return "process " + std::to_string(Peer().pid) + " does not answer";
}

std::shared_ptr<PendingCall> WireSession::StartJoining(LaneKind kind, UniqueFd socket)
{
    int pid = -1;
    int uid = -1;
    if (!GetPeer(socket.Get(), pid, uid) || pid != Peer().pid || uid != Peer().uid) {
        // Another process has taken the place of the first one.
        Die();
        return nullptr;
    }
    auto self = std::static_pointer_cast<WireSession>(shared_from_this());
    auto lane = Lane::Start(std::move(socket), kind, self, nullptr);
    if (lane == nullptr) {
        return nullptr;
    }
    auto call = std::make_shared<PendingCall>();
    bool joining = Track(call);
    {
        // In one step: what others send by the lane must come after the joining, and what the far end sends, too.
        std::lock_guard<std::mutex> lock(mutex_);
        joining = joining && lane->Post([key = key_, device = DeviceName(), call](
                                            LaneLoop &loop) { loop.Join(key, device, call); });
        lanes_[static_cast<size_t>(kind)] = lane;
    }
    laneSet_.notify_all();
    if (IsDead()) {
        // It may have closed its lanes before it had this one.
        lane->Close();
    }
    if (joining) {
        return call;
    }
    Untrack(call);
    return nullptr;
}

bool WireSession::AwaitJoined(const std::shared_ptr<PendingCall> &joining)
{
    int status = BR_FAILED_REPLY;
    WireParcel reply;
    const bool joined = joining->WaitFor(ANSWER_TIME, status, reply) && status == OHOS::ERR_NONE;
    Untrack(joining);
    return joined;
}

void WireSession::OpenBigLane(const std::string &path)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (isBigLaneAsked_) {
            return;
        }
        isBigLaneAsked_ = true;
        isBigLaneDue_ = true;
    }
    auto self = std::static_pointer_cast<WireSession>(shared_from_this());
    WorkerPool::Get().Post([self, path] { self->JoinBigLane(path); });
}

void WireSession::JoinBigLane(const std::string &path)
{
    std::string error;
    bool nobody = false;
    UniqueFd socket = ConnectSocket(path, error, nobody);
    const auto joining = socket ? StartJoining(LaneKind::BIG, std::move(socket)) : nullptr;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        isBigLaneDue_ = false;
    }
    laneSet_.notify_all();
    if (joining == nullptr) {
        IPC_LOGW("large parcels to process %{public}d have no connection of their own: %{public}s", Peer().pid,
            error.c_str());
        return;
    }
    int status = BR_FAILED_REPLY;
    WireParcel reply;
    // A far end that takes long may yet answer; until then what is sent by the lane waits in it.
    if (joining->WaitFor(ANSWER_TIME, status, reply) && status != OHOS::ERR_NONE) {
        Die();
    }
    Untrack(joining);
}

WireSession::WireSession(CallingPeer peer, bool closeUnused) : Session(std::move(peer), closeUnused)
{}

WireSession::~WireSession()
{
    CloseTransport();
}

OHOS::sptr<OHOS::IRemoteObject> WireSession::GetAbility(
    const std::string &bundleName, const std::string &abilityName, int32_t userId, std::string &error)
{
    auto lane = GetLane(LaneKind::SMALL);
    auto call = std::make_shared<PendingCall>();
    int status = BR_FAILED_REPLY;
    WireParcel reply;
    OHOS::sptr<OHOS::IRemoteObject> ability;
    const bool isAsked = lane != nullptr && Track(call) &&
                         lane->Post([=](LaneLoop &loop) { loop.GetAbility(bundleName, abilityName, userId, call); });
    // The answer comes with the one to the joining, if there is still one to wait for.
    if (const auto joining = std::exchange(joining_, nullptr); joining != nullptr && !AwaitJoined(joining)) {
        Untrack(call);
        error = NoAnswer();
        return nullptr;
    }
    if (isAsked && call->WaitFor(ANSWER_TIME, status, reply) && status == OHOS::ERR_NONE && reply.objects.size() == 1) {
        ability = Import(reply.objects.front());
    }
    Untrack(call);
    if (ability == nullptr) {
        error = "the service does not offer " + bundleName + "/" + abilityName + " for user " + std::to_string(userId);
    }
    return ability;
}

void WireSession::SetLane(LaneKind kind, const std::shared_ptr<Lane> &lane)
{
    std::lock_guard<std::mutex> lock(mutex_);
    lanes_[static_cast<size_t>(kind)] = lane;
}

std::shared_ptr<Lane> WireSession::GetLane(LaneKind kind) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return lanes_[static_cast<size_t>(kind)];
}

std::shared_ptr<Lane> WireSession::AwaitLane(LaneKind kind)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const auto &lane = lanes_[static_cast<size_t>(kind)];
    laneSet_.wait(lock, [&] { return lane != nullptr || !isBigLaneDue_; });
    return lane;
}

uint64_t WireSession::Defer(WireParcel &&reply)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (deferredBytes_ > MAX_UNREAD_BYTES) {
        return 0;
    }
    deferredBytes_ += reply.Weight();
    uint64_t ticket = nextTicket_++;
    deferred_.emplace(ticket, std::move(reply));
    return ticket;
}

bool WireSession::HasDeferred() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return !deferred_.empty();
}

bool WireSession::TakeDeferred(uint64_t ticket, WireParcel &reply)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = deferred_.find(ticket);
    if (found == deferred_.end()) {
        return false;
    }
    reply = std::move(found->second);
    deferredBytes_ -= reply.Weight();
    deferred_.erase(found);
    return true;
}

void WireSession::Send(
    const ProxyTarget &target, uint32_t code, int flags, WireParcel &&data, const std::shared_ptr<PendingCall> &call)
{
    if (data.Weight() > MAX_PARCEL_BYTES) {
        call->Complete(BR_FAILED_REPLY);
        return;
    }
    auto lane = AwaitLane(data.Weight() > BIG_PARCEL ? LaneKind::BIG : LaneKind::SMALL);
    if (lane == nullptr) {
        lane = GetLane(LaneKind::SMALL);
    }
    auto reference = std::static_pointer_cast<WireReference>(target.reference);
    auto shared = std::make_shared<WireParcel>(std::move(data));
    auto job = [reference, code, flags, shared, call](
                   LaneLoop &loop) { loop.Call(reference, code, flags, std::move(*shared), call); };
    if (lane == nullptr || !lane->Post(job)) {
        call->Complete(BR_DEAD_REPLY);
    }
}

void WireSession::CloseTransport()
{
    {
        // Nobody is to wait for a lane any more, nor to open one.
        std::lock_guard<std::mutex> lock(mutex_);
        isBigLaneAsked_ = true;
        isBigLaneDue_ = false;
    }
    laneSet_.notify_all();
    for (LaneKind kind : LANES) {
        if (auto lane = GetLane(kind)) {
            lane->Close();
        }
    }
}

} // namespace Host::Ipc
