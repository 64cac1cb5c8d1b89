// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HILOG_LOG_C_H
#define HILOG_LOG_C_H

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Users define these before the first inclusion, or with #undef and #define after it.
#ifndef LOG_DOMAIN
#define LOG_DOMAIN 0
#endif
#ifndef LOG_TAG
#define LOG_TAG NULL
#endif

typedef enum {
    LOG_TYPE_MIN = 0,
    LOG_APP = 0,
    LOG_INIT = 1,
    // Domains 0xD000000 to 0xD0FFFFF only.
    LOG_CORE = 3,
    LOG_KMSG = 4,
    LOG_ONLY_PRERELEASE = 5,
    LOG_TYPE_MAX
} LogType;

typedef enum {
    LOG_LEVEL_MIN = 0,
    LOG_DEBUG = 3,
    LOG_INFO = 4,
    LOG_WARN = 5,
    LOG_ERROR = 6,
    LOG_FATAL = 7,
    LOG_LEVEL_MAX
} LogLevel;

// Writes one message: the bytes of its text, or -1 when it was dropped (unknown type or level, level below the filter, no
// tag, no format, a domain that LOG_CORE does not have). `%{public}X` prints its argument; `%{private}X` and a bare `%X`
// print "<private>". Tags are cut at 31 characters, texts at 4095 bytes. Any thread.
int HiLogPrint(LogType type, LogLevel level, unsigned int domain, const char *tag, const char *fmt, ...)
#ifdef __clang__
    // gcc does not know this kind of format.
    __attribute__((__format__(os_log, 5, 6)))
#endif
    ;

// Whether a message of this level would pass the filter.
bool HiLogIsLoggable(unsigned int domain, const char *tag, LogLevel level);

// Called with each finished text, in the thread that logs, before HiLogPrint returns; several threads may call it at once.
// Never called for dropped messages. The pointers end with the call. Must not log itself.
typedef void (*LogCallback)(
    const LogType type, const LogLevel level, const unsigned int domain, const char *tag, const char *msg);

// One for the process; null takes it away. A call that is under way may still reach the former callback.
void LOG_SetCallback(LogCallback callback);

#define HILOG_IMPL(type, level, domain, tag, ...) HiLogPrint(type, level, domain, tag, ##__VA_ARGS__)

#define HILOG_DEBUG(type, ...) ((void)HILOG_IMPL((type), LOG_DEBUG, LOG_DOMAIN, LOG_TAG, __VA_ARGS__))
#define HILOG_INFO(type, ...) ((void)HILOG_IMPL((type), LOG_INFO, LOG_DOMAIN, LOG_TAG, __VA_ARGS__))
#define HILOG_WARN(type, ...) ((void)HILOG_IMPL((type), LOG_WARN, LOG_DOMAIN, LOG_TAG, __VA_ARGS__))
#define HILOG_ERROR(type, ...) ((void)HILOG_IMPL((type), LOG_ERROR, LOG_DOMAIN, LOG_TAG, __VA_ARGS__))
#define HILOG_FATAL(type, ...) ((void)HILOG_IMPL((type), LOG_FATAL, LOG_DOMAIN, LOG_TAG, __VA_ARGS__))

#ifdef __cplusplus
}
#endif

#endif // HILOG_LOG_C_H
