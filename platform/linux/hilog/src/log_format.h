// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HILOG_LOG_FORMAT_H
#define HILOG_LOG_FORMAT_H

#include <cstdarg>
#include <cstddef>

namespace Host {

// Fills `out` with the terminated text of a log message, cut to fit, and gives its length. A conversion that printf does
// not know ends the interpretation, since what arguments follow is unknown then: the rest of `format` is taken as it is.
size_t FormatLogText(char *out, size_t capacity, const char *format, va_list args);

} // namespace Host

#endif // HILOG_LOG_FORMAT_H
