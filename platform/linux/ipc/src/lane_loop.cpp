// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lane_loop.h"

#include <exception>
#include <mutex>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <utility>

#include "driver_result.h"
#include "ipc_limits.h"
#include "ipc_log.h"
#include "ipc_types.h"
#include "lane_servers.h"
#include "worker_pool.h"

namespace Host::Ipc {

namespace {

constexpr uint64_t BYTES_PER_WORD = 8;

capnp::ReaderOptions Limits()
{
    capnp::ReaderOptions options;
    options.traversalLimitInWords = MAX_MESSAGE_BYTES / BYTES_PER_WORD;
    return options;
}

// A first guess that spares small parcels further segments.
capnp::MessageSize SizeHint(const WireParcel &parcel)
{
    constexpr uint64_t frame = 64;
    constexpr uint64_t entry = 16;
    return {parcel.values.size() / BYTES_PER_WORD + frame + parcel.objects.size() * entry,
        static_cast<kj::uint>(parcel.objects.size())};
}

capnp::rpc::twoparty::Side SideOf(const Lane &lane)
{
    return lane.Host() == nullptr ? capnp::rpc::twoparty::Side::CLIENT : capnp::rpc::twoparty::Side::SERVER;
}

// One thread after the other: the first one fills constants of the library, in a way that ThreadSanitizer cannot see.
kj::AsyncIoContext SetUpLoop()
{
    static auto *mutex = new std::mutex();
    std::lock_guard<std::mutex> lock(*mutex);
    return kj::setupAsyncIo();
}

} // namespace

void LaneLoop::Serve(const std::shared_ptr<Lane> &lane, UniqueFd socket)
{
    auto io = SetUpLoop();
    LaneLoop loop(lane, io, std::move(socket));
    loop.Run();
}

LaneLoop::LaneLoop(const std::shared_ptr<Lane> &lane, kj::AsyncIoContext &io, UniqueFd socket)
    : lane_(lane), io_(io), socket_(socket.Get()),
      stream_(io.lowLevelProvider->wrapUnixSocketFd(kj::AutoCloseFd(socket.Release()))),
      messages_(*stream_, [this] { return MayRead(); }), network_(messages_, MAX_DESCRIPTORS, SideOf(*lane), Limits()),
      rpc_(capnp::makeRpcServer(network_, Wire::Bootstrap::Client(kj::heap<BootstrapServer>(*this)))), peer_(nullptr),
      tasks_(*this)
{
    capnp::MallocMessageBuilder message;
    auto peerId = message.initRoot<capnp::rpc::twoparty::VatId>();
    peerId.setSide(SideOf(*lane) == capnp::rpc::twoparty::Side::CLIENT ? capnp::rpc::twoparty::Side::SERVER
                                                                       : capnp::rpc::twoparty::Side::CLIENT);
    peer_ = rpc_.bootstrap(peerId).castAs<Wire::Bootstrap>();
}

LaneLoop::~LaneLoop() = default;

void LaneLoop::Run()
{
    tasks_.add(network_.onDisconnect().then([this] {
        closed_ = true;
        if (auto session = Session()) {
            session->Die();
        }
        eventfd_write(lane_->WakeFd(), 1);
    }));
    kj::UnixEventPort::FdObserver observer(
        io_.unixEventPort, lane_->WakeFd(), kj::UnixEventPort::FdObserver::OBSERVE_READ);
    while (true) {
        Drain();
        if (closed_ && handlers_.empty() && responses_.empty()) {
            break;
        }
        observer.whenBecomesReadable().wait(io_.waitScope);
    }
    io_.waitScope.poll();
}

void LaneLoop::Drain()
{
    eventfd_t count = 0;
    eventfd_read(lane_->WakeFd(), &count);
    for (auto &job : lane_->TakeJobs()) {
        job(*this);
    }
}

std::shared_ptr<WireSession> LaneLoop::Session() const
{
    return lane_->GetSession();
}

bool LaneLoop::IsIdle()
{
    // What handlers have answered becomes a message first.
    io_.waitScope.poll();
    auto session = Session();
    return handlers_.empty() && network_.getCurrentQueueCount() == 0 && (session == nullptr || !session->HasDeferred());
}

bool LaneLoop::MayRead()
{
    // What a client has queued for its service are its own requests, however many it likes.
    const bool isClient = lane_->Host() == nullptr;
    if (isClient || (network_.getCurrentQueueSize() <= MAX_UNREAD_BYTES &&
                        network_.getCurrentQueueCount() <= MAX_UNREAD_MESSAGES)) {
        return true;
    }
    auto session = Session();
    IPC_LOGE("process %{public}d is cut off: it asks on and leaves %{public}zu bytes of replies unread",
        session == nullptr ? -1 : session->Peer().pid, network_.getCurrentQueueSize());
    // What is queued is not waited for.
    Shutdown();
    return false;
}

void LaneLoop::Shutdown()
{
    shutdown(socket_, SHUT_RDWR);
}

void LaneLoop::taskFailed(kj::Exception &&exception)
{
    IPC_LOGW("a task of a connection failed: %{public}s", exception.getDescription().cStr());
}

template <typename Body>
void LaneLoop::Guard(const std::shared_ptr<PendingCall> &call, Body &&body)
{
    try {
        body();
    } catch (const kj::Exception &error) {
        Fail(error, call);
    } catch (const std::exception &error) {
        IPC_LOGE("a call failed: %{public}s", error.what());
        call->Complete(BR_FAILED_REPLY);
    } catch (...) {
        call->Complete(BR_FAILED_REPLY);
    }
}

void LaneLoop::Fail(const kj::Exception &error, const std::shared_ptr<PendingCall> &call)
{
    if (error.getType() != kj::Exception::Type::DISCONNECTED) {
        IPC_LOGE("a call failed: %{public}s", error.getDescription().cStr());
        call->Complete(BR_FAILED_REPLY);
        return;
    }
    // Dead first: who hears of the failure and calls again must hear that the object is dead.
    if (auto session = Session()) {
        session->Die();
    }
    call->Complete(BR_DEAD_REPLY);
}

void LaneLoop::Call(const std::shared_ptr<WireReference> &target, uint32_t code, int flags, WireParcel &&data,
    const std::shared_ptr<PendingCall> &call)
{
    Guard(call, [&] {
        auto request = ClientFor(target).sendRequestRequest(SizeHint(data));
        request.setCode(code);
        request.setFlags(static_cast<uint32_t>(flags));
        Encode(data, request.initParcel());
        tasks_.add(request.send().then(
            [this, call, target](
                capnp::Response<SendResults> &&response) { Guard(call, [&] { OnReply(kj::mv(response), call); }); },
            [this, call](kj::Exception &&error) { Fail(error, call); }));
    });
}

void LaneLoop::OnReply(capnp::Response<SendResults> &&response, const std::shared_ptr<PendingCall> &call)
{
    int result = response.getResult();
    uint64_t ticket = response.getFetch();
    if (ticket == 0) {
        Finish(kj::mv(response), result, call);
        return;
    }
    auto session = Session();
    auto other = session == nullptr ? nullptr : session->GetLane(LaneKind::BIG);
    if (other == nullptr || other == lane_ ||
        !other->Post([ticket, result, call](LaneLoop &loop) { loop.Fetch(ticket, result, call); })) {
        call->Complete(BR_FAILED_REPLY);
    }
}

void LaneLoop::Fetch(uint64_t ticket, int result, const std::shared_ptr<PendingCall> &call)
{
    Guard(call, [&] {
        auto request = peer_.fetchRequest();
        request.setTicket(ticket);
        tasks_.add(request.send().then(
            [this, result, call](capnp::Response<Wire::Bootstrap::FetchResults> &&response) {
                Guard(call, [&] { Finish(kj::mv(response), result, call); });
            },
            [this, call](kj::Exception &&error) { Fail(error, call); }));
    });
}

template <typename Results>
void LaneLoop::Finish(capnp::Response<Results> &&response, int result, const std::shared_ptr<PendingCall> &call)
{
    auto parcel = std::make_shared<WireParcel>();
    kj::Vector<kj::Promise<void>> waits;
    auto reader = response.getParcel();
    Decode(reader, *parcel, waits);
    if (auto block = reader.getBlock(); block.size() != 0) {
        uint64_t key = nextKey_++;
        auto drop = [lane = lane_, key](
                        const void *) { lane->Post([key](LaneLoop &loop) { loop.responses_.erase(key); }); };
        parcel->block = RawBlock{block.begin(), block.size(), std::shared_ptr<const void>(block.begin(), drop)};
        responses_.emplace(key, std::make_shared<capnp::Response<Results>>(kj::mv(response)));
    }
    auto complete = [call, result, parcel] {
        if (!call->Complete(OHOS::ERR_NONE, result, std::move(*parcel))) {
            // Nobody waits any more; what the parcel holds must not end on this thread.
            WorkerPool::Get().Post([parcel] {});
        }
    };
    if (waits.empty()) {
        complete();
        return;
    }
    tasks_.add(kj::joinPromises(waits.releaseAsArray()).then(complete, [this, call](kj::Exception &&error) {
        Fail(error, call);
    }));
}

void LaneLoop::Join(const std::string &key, const std::string &deviceName, const std::shared_ptr<PendingCall> &call)
{
    Guard(call, [&] {
        auto request = peer_.joinRequest();
        request.setSession(kj::arrayPtr(reinterpret_cast<const kj::byte *>(key.data()), key.size()));
        request.setLane(static_cast<uint16_t>(lane_->Kind()));
        request.setDevice(deviceName.c_str());
        tasks_.add(request.send().then(
            [call](capnp::Response<Wire::Bootstrap::JoinResults> &&) { call->Complete(OHOS::ERR_NONE); },
            [this, call](kj::Exception &&error) { Fail(error, call); }));
    });
}

void LaneLoop::GetAbility(const std::string &bundleName, const std::string &abilityName, int32_t userId,
    const std::shared_ptr<PendingCall> &call)
{
    Guard(call, [&] {
        auto request = peer_.getAbilityRequest();
        request.setBundle(bundleName.c_str());
        request.setAbility(abilityName.c_str());
        request.setUser(userId);
        tasks_.add(request.send().then(
            [this, call](capnp::Response<Wire::Bootstrap::GetAbilityResults> &&response) {
                Guard(call, [&] {
                    WireParcel parcel;
                    kj::Vector<kj::Promise<void>> waits;
                    parcel.objects.resize(1);
                    DecodeEntry(response.getEntry(), parcel.objects.front(), waits);
                    call->Complete(OHOS::ERR_NONE, 0, std::move(parcel));
                });
            },
            [this, call](kj::Exception &&error) { Fail(error, call); }));
    });
}

void LaneLoop::DropClient(uint64_t key)
{
    clients_.erase(key);
}

Wire::RemoteObject::Client LaneLoop::ClientFor(const std::shared_ptr<WireReference> &reference)
{
    auto found = clients_.find(reference->Key());
    if (found != clients_.end()) {
        return *found->second;
    }
    // The object came over the other lane. Calls may follow at once; they wait at the far end for the answer.
    auto request = peer_.resolveRequest();
    request.setId(reference->Id());
    auto promise = request.send();
    Wire::RemoteObject::Client client = promise.getObject();
    tasks_.add(promise.then([reference](capnp::Response<Wire::Bootstrap::ResolveResults> &&) {}));
    clients_.emplace(reference->Key(), std::make_unique<Wire::RemoteObject::Client>(client));
    return client;
}

kj::Promise<void> LaneLoop::HandleRequest(uint64_t exportId, SendContext context)
{
    auto session = Session();
    KJ_REQUIRE(session != nullptr, "not joined");
    auto target = session->FindExport(exportId);
    KJ_REQUIRE(target != nullptr, "the object is gone");
    KJ_REQUIRE(handlers_.size() < MAX_CALLS_UNDER_WAY, "too many requests are under way", session->Peer().pid);
    // Left alone it fails when the connection ends, as it would have a moment later. Not so one that serves a call of
    // ours: we may be waiting for it.
    if (lane_->Host() != nullptr && lane_->Host()->IsFinishing() && !session->IsCalling()) {
        return kj::NEVER_DONE;
    }
    auto params = context.getParams();
    auto data = std::make_shared<WireParcel>();
    kj::Vector<kj::Promise<void>> waits;
    Decode(params.getParcel(), *data, waits);
    // The request stays where it is until the handler has answered.
    auto block = params.getParcel().getBlock();
    data->block = RawBlock{block.begin(), block.size(), nullptr};
    uint32_t code = params.getCode();
    int flags = static_cast<int>(params.getFlags());
    auto paf = kj::newPromiseAndFulfiller<void>();
    uint64_t key = nextKey_++;
    handlers_.emplace(key, Handler{context, kj::mv(paf.fulfiller)});
    auto dispatch = [lane = lane_, session, target = std::move(target), code, flags, data, key]() mutable {
        session->Dispatch(
            std::move(target), code, flags, std::move(*data), [lane, key](int result, WireParcel &&reply) {
                auto shared = std::make_shared<WireParcel>(std::move(reply));
                lane->Post([key, result, shared](LaneLoop &loop) { loop.Answer(key, result, std::move(*shared)); });
            });
    };
    if (waits.empty()) {
        dispatch();
    } else {
        tasks_.add(
            kj::joinPromises(waits.releaseAsArray()).then(std::move(dispatch), [this, key](kj::Exception &&error) {
                handlers_.at(key).fulfiller->reject(kj::mv(error));
                handlers_.erase(key);
                // It may have been what a closed connection still waited for.
                eventfd_write(lane_->WakeFd(), 1);
            }));
    }
    return kj::mv(paf.promise);
}

void LaneLoop::Answer(uint64_t key, int result, WireParcel &&reply)
{
    auto found = handlers_.find(key);
    if (found == handlers_.end()) {
        return;
    }
    Handler handler{kj::mv(found->second)};
    handlers_.erase(found);
    try {
        auto session = Session();
        bool toOther = session != nullptr && lane_->Kind() == LaneKind::SMALL &&
                       reply.Weight() > WireSession::BIG_PARCEL && session->GetLane(LaneKind::BIG) != nullptr;
        auto results = handler.context.getResults(toOther ? SizeHint(WireParcel()) : SizeHint(reply));
        results.setResult(result);
        if (toOther) {
            uint64_t ticket = session->Defer(std::move(reply));
            KJ_REQUIRE(ticket != 0, "too many large replies are not fetched", session->Peer().pid);
            results.setFetch(ticket);
        } else {
            Encode(reply, results.initParcel());
        }
        handler.fulfiller->fulfill();
    } catch (kj::Exception &error) {
        handler.fulfiller->reject(kj::mv(error));
    }
}

void LaneLoop::AnswerFetch(FetchContext context)
{
    auto session = Session();
    WireParcel reply;
    KJ_REQUIRE(session != nullptr && session->TakeDeferred(context.getParams().getTicket(), reply), "no such reply");
    auto results = context.getResults(SizeHint(reply));
    Encode(reply, results.initParcel());
}

} // namespace Host::Ipc
