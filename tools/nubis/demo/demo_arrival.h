// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_ARRIVAL_H
#define NUBIS_TOOL_DEMO_ARRIVAL_H

#include <cstddef>
#include <string>

#include <json/json.h>

#include "demo_report.h"

namespace NubisTool {

// How many notifications of the action are in what Await returned.
size_t NotificationsOf(const Json::Value &arrival, const std::string &action);

// Whether nothing was asked of the service, and nothing came.
bool IsUntouched(const Json::Value &arrival);

// Tells what has come of many changes, and checks it against what was sent: announced once for each transaction, read
// where it was announced and nowhere else, complete, and nothing besides.
void CheckArrival(DemoReport &report, const Json::Value &sent, const std::string &action, const Json::Value &arrival);

} // namespace NubisTool

#endif
