// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_EVENT_LOG_H
#define HOST_EVENT_LOG_H

#include <string>

namespace Host {

/// The file in which the event client keeps the events of one of its instances, oldest first, one JSON object a line:
/// {"time" (milliseconds since the epoch), "appId", "serviceId", "databasePath", "reportUrl", "reportParams", "eventId",
/// "eventType", "fields"}. Absent until the first event. Any thread; reads the environment at each call.
std::string EventLogPath(const std::string &instanceTag);

} // namespace Host

#endif
