// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <map>

#include "demo_arrival.h"
#include "demo_forger.h"
#include "demo_orders.h"
#include "record_json.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

void PlayForgery(DemoStage &stage, const std::string &what, const Json::Value &forgery)
{
    stage.publish(CompactText(forgery));
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

// The library judges a notification by its signature alone, so an old one is still a true one. It does no harm either:
// a device reads on from its cursors, whatever wakes it.
void PlayOldOne(DemoStage &stage)
{
    stage.publish(stage.lastNotification);
    Json::Value arrival = Await(stage.second, stage.lastAction, 1);
    stage.report.Number("requests after an old one, played again", arrival["requests"].asUInt64());
    stage.report.Check("it is genuine, so B looked where it says, and nothing came a second time",
        NotificationsOf(arrival, stage.lastAction) == 1 && arrival["requests"].asUInt64() > 0 &&
            arrival["asked"] == arrival["announced"] && arrival["records"].asUInt64() == 0 &&
            arrival["refused"].empty());
}

} // namespace

void PlayForgeryScene(DemoStage &stage, const DemoForger &forger)
{
    stage.report.Step("Somebody else writes to B's event: forged notifications, and an old one");
    Json::Value real;
    std::string error;
    ParseJsonText(stage.lastNotification, real, error);
    stage.report.Check("there is a real one to start from", real.isObject());
    if (!real.isObject()) {
        return;
    }
    PlayForgery(stage, "a real one with one member changed", WithAnnounced(real, "Country"));
    PlayForgery(stage, "the same, signed with another key", forger.Sign(WithAnnounced(real, "Country")));
    Json::Value bare = real;
    bare.removeMember("signV2");
    PlayForgery(stage, "a real one without its signature", bare);
    PlayOldOne(stage);
}

} // namespace NubisTool
