// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_CALLING_PEER_H
#define HOST_CALLING_PEER_H

#include <string>

namespace Host {

/// The process at the other end of a session. Process and user id come from the kernel, the device name from the peer.
struct CallingPeer {
    ///@{
    /// Of the kernel; -1 when it is not known.
    int pid = -1;
    int uid = -1;
    ///@}
    /// What the peer calls its device (NUBIS_DEVICE_NAME); nothing vouches for it.
    std::string deviceName;
};

/// Whose request this thread is handling, valid inside OnRemoteRequest. Outside of one, and for abilities registered in
/// this process, it is this process itself.
CallingPeer GetCallingPeer();

} // namespace Host

#endif // HOST_CALLING_PEER_H
