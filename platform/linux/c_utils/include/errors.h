// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_ERRORS_H
#define OHOS_ERRORS_H

#include <cerrno>

namespace OHOS {

using ErrCode = int;

// The common modules have the base offset 0, so that their errors are the system's errno values.
enum {
    ERR_OK = 0,
    ERR_NO_INIT = ENODEV,
    ERR_INVALID_VALUE = EINVAL,
    ERR_DEAD_OBJECT = EPIPE,
    ERR_TIMED_OUT = ETIMEDOUT,
};

} // namespace OHOS

#endif // OHOS_ERRORS_H
