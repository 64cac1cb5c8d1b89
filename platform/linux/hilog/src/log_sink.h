// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HILOG_LOG_SINK_H
#define HILOG_LOG_SINK_H

#include <string_view>

#include "hilog/log_c.h"

namespace Host {

// Writes a finished message to the file NUBIS_LOG_FILE, or to stderr when none is named or it cannot be opened. Each line
// of the text gets the head "MM-DD HH:MM:SS.mmm pid tid L domain/tag: ". Lines of threads and processes never mix.
void WriteLog(LogType type, LogLevel level, unsigned int domain, std::string_view tag, std::string_view text);

} // namespace Host

#endif // HILOG_LOG_SINK_H
