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

} // namespace OHOS

#endif // OHOS_IPC_TYPES_H
