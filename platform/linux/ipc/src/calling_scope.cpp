// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "calling_scope.h"

#include <unistd.h>

#include "host/paths.h"

namespace Host {

namespace {
thread_local const CallingPeer *g_callingPeer = nullptr;
}

CallingPeer GetCallingPeer()
{
    return g_callingPeer != nullptr ? *g_callingPeer : Ipc::OwnPeer();
}

namespace Ipc {

CallingScope::CallingScope(const CallingPeer &peer) : before_(g_callingPeer)
{
    g_callingPeer = &peer;
}

CallingScope::~CallingScope()
{
    g_callingPeer = before_;
}

CallingPeer OwnPeer()
{
    CallingPeer peer;
    peer.pid = getpid();
    peer.uid = static_cast<int>(geteuid());
    peer.deviceName = DeviceName();
    return peer;
}

} // namespace Ipc

} // namespace Host
