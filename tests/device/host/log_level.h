// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_LOG_LEVEL_H
#define HOST_LOG_LEVEL_H

#include "hilog/log.h"

namespace Host {
// On a device the level is a setting of the system that a process cannot change. The tests that look at logged texts
// need all of them: `hilog -b D -D d004315` before they run.
inline void SetLogLevel(LogLevel)
{}

inline LogLevel GetLogLevel()
{
    return LOG_DEBUG;
}
} // namespace Host

#endif // HOST_LOG_LEVEL_H
