// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_CALLING_SCOPE_H
#define HOST_IPC_CALLING_SCOPE_H

#include "host/calling_peer.h"

namespace Host::Ipc {

// While it lives, this thread handles a request of `peer`. Scopes nest.
class CallingScope {
public:
    explicit CallingScope(const CallingPeer &peer);
    ~CallingScope();
    CallingScope(const CallingScope &) = delete;
    CallingScope &operator=(const CallingScope &) = delete;

private:
    const CallingPeer *const before_;
};

// This process as its peers see it.
CallingPeer OwnPeer();

} // namespace Host::Ipc

#endif // HOST_IPC_CALLING_SCOPE_H
