// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_RECORD_ORDERS_H
#define NUBIS_TOOL_DEMO_RECORD_ORDERS_H

#include <string>

#include <json/json.h>

#include "demo_records.h"
#include "session.h"

namespace NubisTool {

// What a device of the demo does to single records and to its container's lock. What it saves is not put into what it
// holds: the notification of its own change brings it. A record is {"recordId", "recordType", "version", "fields"}.
// Throws CommandError when the service cannot be reached; a refusal is an answer. One thread.
class DemoRecordOrders {
public:
    DemoRecordOrders(Session &session, DemoRecords &records);

    // The first records of a type, in the order of their ids, as the device holds them: {"records"}.
    Json::Value Pick(const std::string &recordType, size_t count);
    // A record as the device holds it.
    Json::Value Read(const std::string &recordId);
    // A record as the service has it, which the device then holds.
    Json::Value Fetch(const std::string &recordId, const std::string &recordType);
    // {"saved", "version"}, or {"saved", "reason", "text"} when it was refused.
    Json::Value Save(const Json::Value &record, Nubis::NBSavePolicy policy, const std::string &action);
    // {"interval"} in seconds.
    Json::Value Lock();
    Json::Value Unlock();

private:
    Session &session_;
    DemoRecords &records_;
    Nubis::NBLock lock_;
};

// {"reason", "text"} of an error.
Json::Value RefusalJson(const Nubis::NBError &error);

} // namespace NubisTool

#endif
