// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_DEVICE_H
#define NUBIS_TOOL_DEMO_DEVICE_H

#include <string>

#include "console.h"

namespace NubisTool {

// What each device of the demo does, as a process of its own. Orders come as JSON objects, one a line, on standard
// input, and each is answered by one on standard output:
//
//   {"order": "import", "folder"}      the data becomes records        {"records", "saved", "requests", "bytes", "waves"}
//   {"order": "edit", "edits", "removals", "additions"}
//                                      some records change             {"changed", "removed", "added": [ids]}
//   {"order": "follow"}                changes are read and kept       {"changed", "removed", "added": [ids], "requests"}
//   {"order": "write", "path"}         what the device holds, as file  {"records"}
//
// Every answer has "seconds"; a failed order is answered by {"error", "advice"}.
int RunDemoDevice(int user, const Console &console);

} // namespace NubisTool

#endif
