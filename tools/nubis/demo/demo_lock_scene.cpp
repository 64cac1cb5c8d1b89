// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_orders.h"

namespace NubisTool {
namespace {

Json::Value Save(DemoStage &stage, DemoDevice &device, const Json::Value &record, const std::string &name)
{
    return SaveRecord(stage, device, OnlyField(WithField(record, "name", name), "name"), Nubis::NB_SAVE_CHANGED_FIELDS);
}

std::string NameOf(const Json::Value &record)
{
    return record["fields"]["name"].asString();
}

} // namespace

void PlayLockScene(DemoStage &stage)
{
    DemoReport &report = stage.report;
    report.Step("Device A locks the container and keeps B out");
    Json::Value order = Order("pick");
    order["recordType"] = "Language";
    order["count"] = 1;
    Json::Value record = stage.first.Do(order)["records"][0];
    Json::Value lock = stage.first.Do(Order("lock"));
    report.Number("time that A's lock lasts", lock["interval"].asUInt64(), "s");
    Json::Value refusal = Save(stage, stage.second, record, "written by B");
    report.Text("B saves, the service says", refusal["text"].asString());
    report.Check("B was refused", !refusal["saved"].asBool() && refusal["reason"].asString() == "LOCK_HELD");

    Json::Value underLock = Save(stage, stage.first, record, "written by A under its lock");
    report.Check("A wrote under its lock", underLock["saved"].asBool());
    AwaitBoth(stage, underLock);
    order = Order("fetch");
    order["recordId"] = record["recordId"];
    order["recordType"] = record["recordType"];
    report.Check("B still reads, what A wrote too", NameOf(stage.second.Do(order)) == "written by A under its lock");

    stage.first.Do(Order("unlock"));
    Json::Value afterwards = Save(stage, stage.second, record, "written by B");
    report.Check("A gave the lock back, and B's save succeeded", afterwards["saved"].asBool());
    AwaitBoth(stage, afterwards);
    report.Check("both hold what B wrote", NameOf(HeldBy(stage.first, record)) == "written by B" &&
                                               NameOf(HeldBy(stage.second, record)) == "written by B");
}

} // namespace NubisTool
