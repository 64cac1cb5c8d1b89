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
    PlayRefused(stage, "a real one with one member changed", CompactText(WithAnnounced(real, "Country")));
    PlayRefused(stage, "the same, signed with another key", CompactText(forger.Sign(WithAnnounced(real, "Country"))));
    Json::Value bare = real;
    bare.removeMember("signV2");
    PlayRefused(stage, "a real one without its signature", CompactText(bare));
    PlayOldOne(stage);
}

} // namespace NubisTool
