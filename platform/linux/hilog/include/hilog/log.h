// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HILOG_LOG_H
#define HILOG_LOG_H

#include "hilog/log_c.h"

#ifdef __cplusplus
#include "hilog/log_cpp.h"
#endif

#endif // HILOG_LOG_H
