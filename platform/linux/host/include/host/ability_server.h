// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_ABILITY_SERVER_H
#define HOST_ABILITY_SERVER_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "host/calling_peer.h"
#include "iremote_object.h"
#include "refbase.h"

namespace Host {

/// What an AbilityServer offers, and until when. Plain values.
struct AbilityServerOptions {
    ///@{
    /// The names that clients connect by.
    std::string bundleName;
    std::string abilityName;
    ///@}
    /// The account whose runtime folder holds the socket.
    int32_t userId = 100;
    /// Run returns when nobody has been connected for this long; zero or less: never for that reason.
    std::chrono::milliseconds idleTimeout{0};
    /// Called once by Run when it is about to return, before the connected clients are cut off: the place to finish what
    /// they wait for. Clients that connect meanwhile wait too. May be empty.
    std::function<void()> beforeClose;
};

/// Offers one ability of this process to the processes of the same user on this machine. Owned by the service program.
/// Requests arrive on IPC threads. Starting IPC makes SIGPIPE ignored for the whole process. Peers of another user are
/// refused. Start, Run and the end of the object belong to one thread; Stop may be called from any thread and from a
/// signal handler.
class AbilityServer {
public:
    /// Only stores its arguments; the ability lives as long as the server or one of its
    /// clients.
    AbilityServer(AbilityServerOptions options, OHOS::sptr<OHOS::IRemoteObject> ability);
    /// Stops, closes the sessions of the connected clients, and removes the socket.
    ~AbilityServer();
    AbilityServer(const AbilityServer &) = delete;
    AbilityServer &operator=(const AbilityServer &) = delete;

    /// Listens at the ability's socket, replacing one that a dead process left behind. False with a text in `error` for
    /// a null ability or an invalid name, when another live process serves this ability, when the runtime folder is not
    /// safe, or when the path is too long.
    bool Start(std::string &error);
    /// Returns when idle long enough or after Stop.
    void Run();
    /// Makes Run return; once it was called, Run returns at once.
    void Stop();

    /// How many clients are connected now.
    size_t SessionCount() const;
    /// Where Start listens; known from the beginning.
    const std::string &SocketPath() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace Host

#endif // HOST_ABILITY_SERVER_H
