// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_DEVICE_H
#define NUBIS_TOOL_DEMO_DEVICE_H

#include <string>

#include "console.h"

namespace NubisTool {

// What each device of the demo does, as a process of its own. Orders come as JSON objects, one a line, on standard
// input, and each is answered by one on standard output. "action" is the user action that a change belongs to, which
// the notifications of the change name.
//
//   {"order": "import", "folder", "action"}        the data becomes records        see DemoWriter
//   {"order": "edit", "edits", "removals", "additions", "action"}
//                                                  some records change             see DemoWriter
//   {"order": "follow", "subscribe"}               from now on notifications are listened to and served; subscribe:
//                                                  they are asked for, too, and what there is already is read
//                                                                                  see DemoFollower and DemoSubscription
//   {"order": "await", "action", "notifications", "refusals"}
//                                                  what has arrived                see DemoFollower
//   {"order": "subscribe", "milliseconds"}         the subscription is renewed     see DemoSubscription
//   {"order": "subscribe anew"}                    another one takes its place     see DemoSubscription
//   {"order": "notify me"}                         a notification of nothing       {"notified"}, and why not
//   {"order": "pick", "recordType", "count"}, {"order": "read", "recordId"}, {"order": "fetch", "recordId", "recordType"},
//   {"order": "save", "record", "policy", "action"}, {"order": "lock"}, {"order": "unlock"}
//                                                                                  see DemoRecordOrders
//   {"order": "write", "path"}                     what the device holds, as file  {"records"}
//
// Every answer has "seconds"; a failed order is answered by {"error", "advice"}.
int RunDemoDevice(int user, const Console &console);

} // namespace NubisTool

#endif
