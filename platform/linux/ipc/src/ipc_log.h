// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LOG_H
#define HOST_IPC_LOG_H

#include "hilog/log.h"

#define IPC_LOG(level, ...) ((void)HILOG_IMPL(LOG_CORE, level, 0xD0057C0, "HostIpc", ##__VA_ARGS__))
#define IPC_LOGE(...) IPC_LOG(LOG_ERROR, __VA_ARGS__)
#define IPC_LOGW(...) IPC_LOG(LOG_WARN, __VA_ARGS__)
#define IPC_LOGI(...) IPC_LOG(LOG_INFO, __VA_ARGS__)

#endif // HOST_IPC_LOG_H
