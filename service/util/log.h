// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_LOG_H
#define NUBIS_SERVICE_UTIL_LOG_H

#include <string>

#include "hilog/log.h"

namespace DriveService {

constexpr unsigned int SERVICE_LOG_DOMAIN = 0xD004316;
constexpr const char *SERVICE_LOG_TAG = "NubisDrive";

inline void LogInfo(const std::string &text)
{
    HILOG_IMPL(LOG_CORE, LOG_INFO, SERVICE_LOG_DOMAIN, SERVICE_LOG_TAG, "%{public}s", text.c_str());
}

inline void LogError(const std::string &text)
{
    HILOG_IMPL(LOG_CORE, LOG_ERROR, SERVICE_LOG_DOMAIN, SERVICE_LOG_TAG, "%{public}s", text.c_str());
}

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_LOG_H
