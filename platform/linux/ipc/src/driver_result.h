// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_DRIVER_RESULT_H
#define HOST_IPC_DRIVER_RESULT_H

namespace Host::Ipc {

// What a proxy's SendRequest answers when the transaction itself did not come through: the codes of the platform's driver,
// which have no name in its IPC headers.
enum {
    // The far process died during the call.
    BR_DEAD_REPLY = 29189,
    // The call failed in any other way.
    BR_FAILED_REPLY = 29201,
};

} // namespace Host::Ipc

#endif // HOST_IPC_DRIVER_RESULT_H
