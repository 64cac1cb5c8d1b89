// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <system_error>

#include "demo_arrival.h"
#include "demo_orders.h"
#include "local_store.h"

namespace NubisTool {
namespace {

constexpr unsigned EDITS = 100;
constexpr unsigned REMOVALS = 50;
constexpr unsigned ADDITIONS = 25;

size_t FileSize(const std::string &path)
{
    std::error_code error;
    auto size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

void Listen(DemoStage &stage)
{
    stage.report.Step("Device B subscribes to the changes, listens for notifications, and reads what there is");
    Json::Value order = Order("follow");
    order["subscribe"] = true;
    Json::Value answer = stage.second.Do(order);
    stage.eventName = answer["eventName"].asString();
    stage.report.Text("event that B listens for", stage.eventName);
    stage.report.Check("B has a subscription, and there is nothing yet",
        !answer["subscription"].asString().empty() && answer["records"].asUInt64() == 0);
}

void Arrive(DemoStage &stage, const std::string &action, const Json::Value &sent)
{
    Json::Value arrival = Await(stage.second, action, sent["transactions"].asUInt64());
    CheckArrival(stage.report, sent, action, arrival);
    stage.lastNotification = arrival["last"].asString();
    stage.lastAction = action;
}

void Import(DemoStage &stage)
{
    DemoReport &report = stage.report;
    report.Step("Device A saves its records");
    Json::Value order = ActionOrder(stage, "import");
    order["folder"] = stage.dataFolder;
    Json::Value sent = stage.first.Do(order);
    size_t total = 0;
    for (const std::string &type : sent["records"].getMemberNames()) {
        report.Number("records of type " + type, sent["records"][type].asUInt64());
        total += sent["records"][type].asUInt64();
    }
    size_t saved = sent["added"].size();
    report.Number("records saved", saved);
    report.Number("requests, each a transaction", sent["transactions"].asUInt64());
    report.Number("record JSON sent", sent["bytes"].asUInt64(), "bytes");
    report.Number("waves, so that references find their records", sent["waves"].asUInt64());
    report.Seconds("time to save them, with B reading", sent["saveSeconds"].asDouble(), saved);
    report.Check("every record was saved", saved == total);
    stage.records = total;

    report.Step("Device B was woken meanwhile: it does not look for changes by itself");
    Arrive(stage, order["action"].asString(), sent);
}

void Edit(DemoStage &stage)
{
    DemoReport &report = stage.report;
    report.Step("Device A changes some, deletes some and adds some");
    Json::Value order = ActionOrder(stage, "edit");
    order["edits"] = EDITS;
    order["removals"] = REMOVALS;
    order["additions"] = ADDITIONS;
    Json::Value sent = stage.first.Do(order);
    report.Number("records changed", sent["changed"].size());
    report.Number("records deleted", sent["removed"].size());
    report.Number("records added", sent["added"].size());
    report.Seconds("time for all three", sent["seconds"].asDouble());
    report.Check("A did what it was told",
        sent["changed"].size() == EDITS && sent["removed"].size() == REMOVALS && sent["added"].size() == ADDITIONS);
    stage.records = stage.records + ADDITIONS - REMOVALS;

    report.Step("Device B was woken by these, too, and read on from its cursors");
    Arrive(stage, order["action"].asString(), sent);
}

} // namespace

void PlayBulkScene(DemoStage &stage)
{
    Listen(stage);
    Import(stage);
    Edit(stage);
    // A holds what it has written; from now on B writes as well.
    Json::Value order = Order("follow");
    order["subscribe"] = false;
    stage.first.Do(order);
}

void PlayComparison(DemoStage &stage)
{
    stage.report.Step("The contents of both devices, record by record and field by field");
    std::string firstFile = stage.folder + "/device-A.jsonl";
    std::string secondFile = stage.folder + "/device-B.jsonl";
    Json::Value order = Order("write");
    order["path"] = firstFile;
    stage.first.Do(order);
    order["path"] = secondFile;
    stage.second.Do(order);
    StoreDifference difference = Compare(LocalStore::Read(firstFile), "A", LocalStore::Read(secondFile), "B");
    stage.report.Number("records compared", difference.records);
    stage.report.Number("fields compared", difference.fields);
    stage.report.Number("size of A's contents", FileSize(firstFile), "bytes");
    stage.report.Number("size of B's contents", FileSize(secondFile), "bytes");
    stage.report.Check("there are as many records as there should be", difference.records == stage.records);
    stage.report.Check(
        "every record, version and field is the same on both", difference.lines.empty(), difference.lines);
}

} // namespace NubisTool
