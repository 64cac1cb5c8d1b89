// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstdlib>
#include <strings.h>

#include "host/log_level.h"

namespace Host {
namespace {

LogLevel LevelOfEnvironment()
{
    struct Name {
        const char *text;
        LogLevel level;
    };
    static constexpr Name NAMES[] = {{"debug", LOG_DEBUG}, {"info", LOG_INFO}, {"warn", LOG_WARN}, {"error", LOG_ERROR},
        {"fatal", LOG_FATAL}, {"none", LOG_LEVEL_MAX}};
    const char *value = std::getenv("NUBIS_LOG_LEVEL");
    for (const auto &name : NAMES) {
        if (value != nullptr && strcasecmp(value, name.text) == 0) {
            return name.level;
        }
    }
    return LOG_ERROR;
}

std::atomic<LogLevel> &CurrentLevel()
{
    // Trivially destructible, so that threads may log while the process ends.
    static std::atomic<LogLevel> level{LevelOfEnvironment()};
    return level;
}

} // namespace

void SetLogLevel(LogLevel level)
{
    CurrentLevel().store(level, std::memory_order_relaxed);
}

LogLevel GetLogLevel()
{
    return CurrentLevel().load(std::memory_order_relaxed);
}

} // namespace Host
