// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string_view>

#include "hilog/log.h"
#include "host/log_level.h"
#include "log_format.h"
#include "log_sink.h"

namespace {

constexpr unsigned int CORE_DOMAIN_FIRST = 0xD000000;
constexpr unsigned int CORE_DOMAIN_LAST = 0xD0FFFFF;
constexpr size_t MAX_TAG_LENGTH = 31;
constexpr size_t MAX_TEXT_LENGTH = 4095;
constexpr int DROPPED = -1;

std::atomic<LogCallback> g_callback{nullptr};

bool IsKnownType(LogType type)
{
    switch (type) {
        case LOG_APP:
        case LOG_INIT:
        case LOG_CORE:
        case LOG_KMSG:
        case LOG_ONLY_PRERELEASE:
            return true;
        default:
            return false;
    }
}

bool IsDomainOf(LogType type, unsigned int domain)
{
    return type != LOG_CORE || (domain >= CORE_DOMAIN_FIRST && domain <= CORE_DOMAIN_LAST);
}

} // namespace

bool HiLogIsLoggable(unsigned int, const char *tag, LogLevel level)
{
    return tag != nullptr && level >= LOG_DEBUG && level < LOG_LEVEL_MAX && level >= Host::GetLogLevel();
}

int HiLogPrint(LogType type, LogLevel level, unsigned int domain, const char *tag, const char *fmt, ...)
{
    if (!IsKnownType(type) || !IsDomainOf(type, domain) || fmt == nullptr || !HiLogIsLoggable(domain, tag, level)) {
        return DROPPED;
    }
    // Logging an error must not change it.
    int savedErrno = errno;
    char text[MAX_TEXT_LENGTH + 1];
    va_list args;
    va_start(args, fmt);
    size_t size = Host::FormatLogText(text, sizeof(text), fmt, args);
    va_end(args);
    char cutTag[MAX_TAG_LENGTH + 1] = "";
    std::memcpy(cutTag, tag, strnlen(tag, MAX_TAG_LENGTH));
    try {
        Host::WriteLog(type, level, domain, cutTag, {text, size});
    } catch (...) {
        // Short of memory or at a failing lock: the message is lost, the program goes on.
        errno = savedErrno;
        return DROPPED;
    }
    if (LogCallback callback = g_callback.load()) {
        callback(type, level, domain, cutTag, text);
    }
    errno = savedErrno;
    return static_cast<int>(size);
}

void LOG_SetCallback(LogCallback callback)
{
    g_callback.store(callback);
}
