// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_arrival.h"

#include <vector>

namespace NubisTool {
namespace {

std::string List(const std::vector<std::string> &texts)
{
    std::string list;
    for (const std::string &text : texts) {
        list += (list.empty() ? "" : ", ") + text;
    }
    return list;
}

} // namespace

size_t NotificationsOf(const Json::Value &arrival, const std::string &action)
{
    return arrival["actions"].get(action, 0U).asUInt64();
}

bool IsUntouched(const Json::Value &arrival)
{
    return arrival["requests"].asUInt64() == 0 && arrival["records"].asUInt64() == 0 && arrival["asked"].empty() &&
           arrival["actions"].empty() && arrival["added"].empty() && arrival["changed"].empty() &&
           arrival["removed"].empty();
}

void CheckArrival(DemoReport &report, const Json::Value &sent, const std::string &action, const Json::Value &arrival)
{
    size_t notifications = NotificationsOf(arrival, action);
    report.Number("notifications that woke B", notifications);
    report.Number("requests that B made of them", arrival["requests"].asUInt64());
    report.Check("each of A's transactions was announced once, and nothing else was",
        notifications == sent["transactions"].asUInt64() && arrival["actions"].size() == 1 &&
            arrival["refused"].empty() && !arrival["late"].asBool());
    Json::Value places(Json::arrayValue);
    for (const Json::Value &type : sent["types"]) {
        places.append("private/" + type.asString());
    }
    std::vector<std::string> asked = SortedIds(arrival["asked"]);
    report.Text("B asked for", List(asked));
    report.Check("B asked for what was announced and changed, and for nothing else",
        asked == SortedIds(places) && asked == SortedIds(arrival["announced"]));
    size_t arrived = 0;
    for (const char *kind : {"added", "changed", "removed"}) {
        std::string verb = std::string(kind) == "removed" ? "deleted" : kind;
        std::vector<std::string> differences = IdDifferences(SortedIds(sent[kind]), SortedIds(arrival[kind]));
        report.Number("records " + verb, arrival[kind].size());
        report.Check("these are exactly the records that A " + verb, differences.empty(), differences);
        arrived += arrival[kind].size();
    }
    report.Check("nothing arrived twice", arrival["records"].asUInt64() == arrived);
}

} // namespace NubisTool
