// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_UNIX_SOCKET_H
#define HOST_IPC_UNIX_SOCKET_H

#include <string>

#include "unique_fd.h"

namespace Host::Ipc {

// Empty with a text in `error` when the path does not fit a socket address, when the system refuses, or when the listening
// process has not made room for some seconds; `nobody` tells that no process listens there.
UniqueFd ConnectSocket(const std::string &path, std::string &error, bool &nobody);
// The same without waiting: empty also when the listening process has no room now.
UniqueFd ConnectSocketAtOnce(const std::string &path, bool &nobody);
// Listens with mode 0600; the path must be free.
UniqueFd ListenSocket(const std::string &path, std::string &error);
// The process at the other end as the kernel knows it; false when it cannot tell.
bool GetPeer(int socket, int &pid, int &uid);

} // namespace Host::Ipc

#endif // HOST_IPC_UNIX_SOCKET_H
