// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LANE_LOOP_H
#define HOST_IPC_LANE_LOOP_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include <capnp/rpc-twoparty.h>
#include <kj/async-io.h>
#include <kj/async-unix.h>

#include "block_stream.h"
#include "lane.h"
#include "pending_call.h"
#include "remote_object.capnp.h"
#include "wire_parcel.h"
#include "wire_session.h"

namespace Host::Ipc {

// The transport of one lane. Everything here happens on the lane's thread, and never blocks: handlers run on IPC threads,
// and what they share with this thread passes through the lane's queue.
//
// It outlives its connection until the last handler has answered and the last received block is given back, because both
// look into messages that belong to this thread.
class LaneLoop final : private kj::TaskSet::ErrorHandler {
public:
    using SendResults = Wire::RemoteObject::SendRequestResults;
    using SendContext = capnp::CallContext<Wire::RemoteObject::SendRequestParams, SendResults>;
    using FetchContext = capnp::CallContext<Wire::Bootstrap::FetchParams, Wire::Bootstrap::FetchResults>;

    // Returns when all is over.
    static void Serve(const std::shared_ptr<Lane> &lane, UniqueFd socket);

    // Sends a request to a far object and completes `call`.
    void Call(const std::shared_ptr<WireReference> &target, uint32_t code, int flags, WireParcel &&data,
        const std::shared_ptr<PendingCall> &call);
    // The connecting end's first steps. `call` gets an empty reply, or one whose only object is the ability.
    void Join(const std::string &key, const std::string &deviceName, const std::shared_ptr<PendingCall> &call);
    void GetAbility(const std::string &bundleName, const std::string &abilityName, int32_t userId,
        const std::shared_ptr<PendingCall> &call);
    // Fetches the reply of a call of the other lane.
    void Fetch(uint64_t ticket, int result, const std::shared_ptr<PendingCall> &call);
    // Gives up a far object.
    void DropClient(uint64_t key);
    void Shutdown();
    // Whether no request is being handled and no answer waits to be written or fetched.
    bool IsIdle();

    // For the objects that the far end calls.
    kj::Promise<void> HandleRequest(uint64_t exportId, SendContext context);
    void AnswerFetch(FetchContext context);
    void EncodeObject(WireObject &object, Wire::Entry::Builder entry);
    std::shared_ptr<WireSession> Session() const;
    const std::shared_ptr<Lane> &GetLane() const
    {
        return lane_;
    }

private:
    struct Handler {
        SendContext context;
        kj::Own<kj::PromiseFulfiller<void>> fulfiller;
    };

    LaneLoop(const std::shared_ptr<Lane> &lane, kj::AsyncIoContext &io, UniqueFd socket);
    ~LaneLoop();
    void Run();
    void Drain();
    void Answer(uint64_t key, int result, WireParcel &&reply);
    void OnReply(capnp::Response<SendResults> &&response, const std::shared_ptr<PendingCall> &call);
    // Completes `call` with the parcel of these results; `call` looks into the response until it gives the block back.
    template <typename Results>
    void Finish(capnp::Response<Results> &&response, int result, const std::shared_ptr<PendingCall> &call);
    void Fail(const kj::Exception &error, const std::shared_ptr<PendingCall> &call);
    // Runs `body`; if it throws, fails the call.
    template <typename Body>
    void Guard(const std::shared_ptr<PendingCall> &call, Body &&body);
    Wire::RemoteObject::Client ClientFor(const std::shared_ptr<WireReference> &reference);
    void Encode(WireParcel &parcel, Wire::Parcel::Builder builder);
    // Leaves the block out. `parcel` is complete when all of `waits` are fulfilled.
    void Decode(Wire::Parcel::Reader reader, WireParcel &parcel, kj::Vector<kj::Promise<void>> &waits);
    void DecodeEntry(Wire::Entry::Reader reader, WireObject &object, kj::Vector<kj::Promise<void>> &waits);
    // Whether the far end, from which a message is about to be read, has read enough of what it was sent; cuts a client
    // off if not.
    bool MayRead();
    void taskFailed(kj::Exception &&exception) override;

    // Ends in reverse order.
    const std::shared_ptr<Lane> lane_;
    kj::AsyncIoContext &io_;
    const int socket_;
    kj::Own<kj::AsyncCapabilityStream> stream_;
    BlockStream messages_;
    capnp::TwoPartyVatNetwork network_;
    capnp::RpcSystem<capnp::rpc::twoparty::VatId> rpc_;
    Wire::Bootstrap::Client peer_;
    // By pointer: a pair cannot hold a client, which copies only from what is not constant.
    std::unordered_map<uint64_t, std::unique_ptr<Wire::RemoteObject::Client>> clients_;
    std::unordered_map<uint64_t, Handler> handlers_;
    std::unordered_map<uint64_t, std::shared_ptr<void>> responses_;
    uint64_t nextKey_ = 1;
    bool closed_ = false;
    kj::TaskSet tasks_;
};

} // namespace Host::Ipc

#endif // HOST_IPC_LANE_LOOP_H
