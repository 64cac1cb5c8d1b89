// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_EVENT_LOG_H
#define HOST_EVENT_LOG_H

#include <cstddef>
#include <string>

namespace Host {

/// The size at which a file of events is put aside; an event whose line is longer than the second is not taken (bytes).
constexpr size_t MAX_EVENT_LOG_BYTES = size_t{8} * 1024 * 1024;
constexpr size_t MAX_EVENT_LINE_BYTES = size_t{256} * 1024;

/// The file in which the event client keeps the events of one of its instances, oldest first, one JSON object a line:
/// {"time" (milliseconds since the epoch), "appId", "serviceId", "databasePath", "reportUrl", "reportParams", "eventId",
/// "eventType", "fields"}. Absent until the first event. Any thread; reads the environment at each call.
std::string EventLogPath(const std::string &instanceTag);

/// The events before those: one file, which the next full one replaces. Absent until the first one is full.
std::string OldEventLogPath(const std::string &instanceTag);

} // namespace Host

#endif
