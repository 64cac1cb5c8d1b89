// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LANE_SERVERS_H
#define HOST_IPC_LANE_SERVERS_H

#include <cstdint>
#include <memory>

#include "remote_object.capnp.h"
#include "unique_fd.h"

// The library's server classes have no virtual destructor on purpose: it deletes them as the type they were made of.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace Host::Ipc {

class LaneLoop;

// One reference of the far end to an object of this end.
class RemoteObjectServer final : public Wire::RemoteObject::Server {
public:
    // `hold` is released with this server, that is when the far end has dropped its reference.
    RemoteObjectServer(LaneLoop &loop, uint64_t exportId, std::shared_ptr<void> hold);

protected:
    kj::Promise<void> sendRequest(SendRequestContext context) override;

private:
    LaneLoop &loop_;
    const uint64_t exportId_;
    const std::shared_ptr<void> hold_;
};

// Carries a file descriptor; takes no requests.
class DescriptorServer final : public Wire::RemoteObject::Server {
public:
    explicit DescriptorServer(std::shared_ptr<UniqueFd> fd);
    kj::Maybe<int> getFd() override;

private:
    const std::shared_ptr<UniqueFd> fd_;
};

// What each end of a lane offers to the other before any object is known.
class BootstrapServer final : public Wire::Bootstrap::Server {
public:
    explicit BootstrapServer(LaneLoop &loop);

protected:
    kj::Promise<void> join(JoinContext context) override;
    kj::Promise<void> getAbility(GetAbilityContext context) override;
    kj::Promise<void> resolve(ResolveContext context) override;
    kj::Promise<void> fetch(FetchContext context) override;

private:
    LaneLoop &loop_;
};

} // namespace Host::Ipc

#pragma GCC diagnostic pop

#endif // HOST_IPC_LANE_SERVERS_H
