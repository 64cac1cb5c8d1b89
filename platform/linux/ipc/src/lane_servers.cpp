// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lane_servers.h"

#include <string>
#include <utility>

#include "ipc_limits.h"
#include "lane_loop.h"

namespace Host::Ipc {

namespace {

std::string ToName(capnp::Text::Reader text)
{
    KJ_REQUIRE(text.size() <= MAX_NAME_SIZE, "a name is too long");
    return std::string(text.cStr(), text.size());
}

} // namespace

RemoteObjectServer::RemoteObjectServer(LaneLoop &loop, uint64_t exportId, std::shared_ptr<void> hold)
    : loop_(loop), exportId_(exportId), hold_(std::move(hold))
{}

kj::Promise<void> RemoteObjectServer::sendRequest(SendRequestContext context)
{
    return loop_.HandleRequest(exportId_, context);
}

DescriptorServer::DescriptorServer(std::shared_ptr<UniqueFd> fd) : fd_(std::move(fd))
{}

kj::Maybe<int> DescriptorServer::getFd()
{
    return fd_->Get();
}

BootstrapServer::BootstrapServer(LaneLoop &loop) : loop_(loop)
{}

kj::Promise<void> BootstrapServer::join(JoinContext context)
{
    const auto &lane = loop_.GetLane();
    auto params = context.getParams();
    auto key = params.getSession();
    KJ_REQUIRE(lane->Host() != nullptr && loop_.Session() == nullptr, "nobody joins here");
    KJ_REQUIRE(key.size() > 0 && key.size() <= MAX_KEY_SIZE, "bad session key");
    KJ_REQUIRE(params.getLane() <= static_cast<uint16_t>(LaneKind::BIG), "no such lane");
    auto session = lane->Host()->Join(std::string(reinterpret_cast<const char *>(key.begin()), key.size()),
        static_cast<LaneKind>(params.getLane()), ToName(params.getDevice()), lane);
    KJ_REQUIRE(session != nullptr, "the session is refused");
    return kj::READY_NOW;
}

kj::Promise<void> BootstrapServer::getAbility(GetAbilityContext context)
{
    const auto &host = loop_.GetLane()->Host();
    auto session = loop_.Session();
    auto params = context.getParams();
    KJ_REQUIRE(host != nullptr && session != nullptr, "no abilities here");
    auto ability = host->FindAbility(ToName(params.getBundle()), ToName(params.getAbility()), params.getUser());
    KJ_REQUIRE(ability != nullptr, "no such ability");
    WireObject object = session->Export(ability);
    loop_.EncodeObject(object, context.getResults().initEntry());
    return kj::READY_NOW;
}

kj::Promise<void> BootstrapServer::resolve(ResolveContext context)
{
    auto session = loop_.Session();
    KJ_REQUIRE(session != nullptr, "not joined");
    uint64_t id = context.getParams().getId();
    auto hold = session->HoldExport(id);
    KJ_REQUIRE(hold != nullptr, "no such object");
    context.getResults().setObject(kj::heap<RemoteObjectServer>(loop_, id, std::move(hold)));
    return kj::READY_NOW;
}

kj::Promise<void> BootstrapServer::fetch(FetchContext context)
{
    loop_.AnswerFetch(context);
    return kj::READY_NOW;
}

} // namespace Host::Ipc
