// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>

#include "demo_arrival.h"
#include "demo_orders.h"
#include "demo_process.h"
#include "interrupt.h"

namespace NubisTool {
namespace {

// Long enough for the request to arrive before its own end.
constexpr int BRIEF_MS = 500;

void WaitUntilOver(int64_t expirationTime)
{
    using std::chrono::milliseconds;
    auto now = std::chrono::duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch());
    if (expirationTime > now.count()) {
        WaitForInterrupt(milliseconds(expirationTime) - now);
        ThrowIfInterrupted();
    }
}

bool IsChanged(const Json::Value &arrival, const Json::Value &first, const Json::Value &second)
{
    Json::Value expected(Json::arrayValue);
    expected.append(first["recordId"]);
    expected.append(second["recordId"]);
    return IdDifferences(SortedIds(expected), SortedIds(arrival["changed"])).empty();
}

} // namespace

void PlayExpiryScene(DemoStage &stage)
{
    DemoReport &report = stage.report;
    report.Step("B's subscription runs out: what notifications have of an end");
    Json::Value order = Order("subscribe");
    order["milliseconds"] = BRIEF_MS;
    Json::Value brief = stage.second.Do(order);
    WaitUntilOver(brief["expirationTime"].asInt64());
    Json::Value refusal = stage.second.Do(Order("notify me"));
    report.Text("B asks for a notification, the service says", refusal["text"].asString());
    report.Check("the service knows the subscription no more",
        !refusal["notified"].asBool() && refusal["reason"].asString() == "UNKNOWN_SUBSCRIPTION");

    PlayRefused(stage, "a real notification, played again now", stage.lastNotification);

    order = Order("pick");
    order["recordType"] = "Language";
    order["count"] = 2;
    Json::Value records = stage.first.Do(order)["records"];
    auto change = [&stage](const Json::Value &record) {
        return SaveRecord(stage, stage.first, OnlyField(WithField(record, "name", "renamed by A"), "name"),
            Nubis::NB_SAVE_CHANGED_FIELDS);
    };
    Json::Value unheard = change(records[0]);
    Json::Value renewed = stage.second.Do(Order("subscribe anew"));
    Json::Value heard = change(records[1]);
    Json::Value arrival = Await(stage.second, heard["action"].asString(), 1);
    Await(stage.first, heard["action"].asString(), 1);
    report.Check("A changed one record before B subscribed anew, and one after",
        unheard["saved"].asBool() && heard["saved"].asBool() && renewed["subscription"] != brief["subscription"]);
    report.Check("only the second change was announced, because notifications come in order",
        NotificationsOf(arrival, unheard["action"].asString()) == 0 &&
            NotificationsOf(arrival, heard["action"].asString()) == 1);
    report.Check("reading on from its cursor, B got both all the same", IsChanged(arrival, records[0], records[1]));
}

} // namespace NubisTool
