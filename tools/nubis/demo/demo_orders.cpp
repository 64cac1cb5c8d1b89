// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_orders.h"

#include <utility>

#include "demo_arrival.h"

namespace NubisTool {

Json::Value Order(const std::string &name)
{
    Json::Value order(Json::objectValue);
    order["order"] = name;
    return order;
}

Json::Value ActionOrder(DemoStage &stage, const std::string &name)
{
    Json::Value order = Order(name);
    order["action"] = "demo-" + std::to_string(++stage.actions) + "-" + name;
    return order;
}

Json::Value SaveRecord(DemoStage &stage, DemoDevice &device, const Json::Value &record, Nubis::NBSavePolicy policy)
{
    Json::Value order = ActionOrder(stage, "save");
    order["record"] = record;
    order["policy"] = policy;
    Json::Value answer = device.Do(order);
    answer["action"] = order["action"];
    return answer;
}

Json::Value Await(DemoDevice &device, const std::string &action, size_t notifications)
{
    Json::Value order = Order("await");
    order["action"] = action;
    order["notifications"] = Json::UInt64(notifications);
    order["refusals"] = 0U;
    return device.Do(order);
}

void PlayRefused(DemoStage &stage, const std::string &what, const std::string &text)
{
    stage.publish(text);
    Json::Value order = Order("await");
    order["action"] = "";
    order["notifications"] = 0U;
    order["refusals"] = 1U;
    Json::Value arrival = stage.second.Do(order);
    std::string reason = arrival["refused"].empty() ? "nothing" : arrival["refused"][0].asString();
    stage.report.Text(what + ", B says", reason);
    stage.report.Check("it was refused, and nothing was asked of the service",
        arrival["refused"].size() == 1 && !arrival["late"].asBool() && IsUntouched(arrival));
}

void AwaitBoth(DemoStage &stage, const Json::Value &saved)
{
    for (DemoDevice *device : {&stage.first, &stage.second}) {
        if (Await(*device, saved["action"].asString(), 1)["late"].asBool()) {
            stage.report.Check("the change is announced to both", false);
        }
    }
}

Json::Value HeldBy(DemoDevice &device, const Json::Value &record)
{
    Json::Value order = Order("read");
    order["recordId"] = record["recordId"];
    Json::Value held = device.Do(order);
    held.removeMember("seconds");
    return held;
}

Json::Value WithField(Json::Value record, const std::string &field, const std::string &text)
{
    record["fields"][field] = text;
    return record;
}

Json::Value OnlyField(const Json::Value &record, const std::string &field)
{
    Json::Value only = record;
    only["fields"] = Json::Value(Json::objectValue);
    only["fields"][field] = record["fields"][field];
    return only;
}

} // namespace NubisTool
