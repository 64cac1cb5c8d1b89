// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IPC_TYPES_H
#define OHOS_IPC_TYPES_H

namespace OHOS {

enum {
    ERR_NONE = 0,
    ERR_TRANSACTION_FAILED = 1,
    ERR_INVALID_DATA = 5,
    ERR_NULL_OBJECT = 7,
    ERR_INVALID_STATE = 10,
    IPC_STUB_UNKNOW_TRANS_ERR = 305,
};

// What a proxy's SendRequest answers when the transaction itself did not come through.
enum {
    // The far process died during the call.
    BR_DEAD_REPLY = 29189,
    // The call failed in any other way.
    BR_FAILED_REPLY = 29201,
};

} // namespace OHOS

#endif // OHOS_IPC_TYPES_H
