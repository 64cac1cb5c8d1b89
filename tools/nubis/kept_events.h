// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_KEPT_EVENTS_H
#define NUBIS_TOOL_KEPT_EVENTS_H

#include <cstddef>
#include <functional>

#include <json/json.h>

namespace NubisTool {

// Shows every event that the event client kept for a user, oldest first; returns how many lines of its files are none.
// Throws CommandError when a file is there but cannot be read.
size_t VisitKeptEvents(int user, const std::function<void(Json::Value &&event)> &visit);

} // namespace NubisTool

#endif
