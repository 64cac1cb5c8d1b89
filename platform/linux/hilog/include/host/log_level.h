// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_LOG_LEVEL_H
#define HOST_LOG_LEVEL_H

#include "hilog/log.h"

namespace Host {

/// The lowest level that is logged in this process; LOG_LEVEL_MAX logs nothing. Until it is set, the environment's
/// NUBIS_LOG_LEVEL holds (debug, info, warn, error, fatal or none), and without that, error. Any thread.
void SetLogLevel(LogLevel level);
LogLevel GetLogLevel();

} // namespace Host

#endif // HOST_LOG_LEVEL_H
