// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <vector>

#include "demo_orders.h"
#include "record_json.h"

namespace NubisTool {
namespace {

constexpr const char *NAME = "name";
constexpr const char *OFFICIAL_NAME = "officialName";

// Both hold the record in the same version, and A changes its name. Returns what B held before, with B's own change.
Json::Value ChangeOnBoth(DemoStage &stage, const Json::Value &record)
{
    Json::Value ofFirst = HeldBy(stage.first, record);
    Json::Value ofSecond = HeldBy(stage.second, record);
    stage.report.Text("record that both change", record["recordId"].asString());
    stage.report.Number("version that both start from", ofFirst["version"].asUInt64());
    stage.report.Check("both hold the same", ofFirst == ofSecond);
    Json::Value saved = SaveRecord(stage, stage.first,
        WithField(ofFirst, NAME, ofFirst["fields"][NAME].asString() + ", says A"), Nubis::NB_SAVE_IF_UNCHANGED);
    stage.report.Check("A was first", saved["saved"].asBool());
    AwaitBoth(stage, saved);
    return WithField(ofSecond, OFFICIAL_NAME, ofSecond["fields"][NAME].asString() + ", says B");
}

void CheckBoth(
    DemoStage &stage, const std::string &expectation, const Json::Value &record, const Json::Value &expectedFields)
{
    for (DemoDevice *device : {&stage.first, &stage.second}) {
        Json::Value held = HeldBy(*device, record);
        bool isFirst = device == &stage.first;
        std::vector<std::string> differences;
        if (held["fields"] != expectedFields) {
            differences = {"expected " + CompactText(expectedFields), "found " + CompactText(held["fields"])};
        }
        stage.report.Check(expectation + (isFirst ? ", on A" : ", on B"), differences.empty(), differences);
    }
}

void Merge(DemoStage &stage, const Json::Value &record)
{
    Json::Value mine = ChangeOnBoth(stage, record);
    Json::Value refusal = SaveRecord(stage, stage.second, mine, Nubis::NB_SAVE_IF_UNCHANGED);
    stage.report.Text("B saves if unchanged, the service says", refusal["text"].asString());
    stage.report.Check(
        "B was refused", !refusal["saved"].asBool() && refusal["reason"].asString() == "VERSION_CONFLICT");

    Json::Value order = Order("fetch");
    order["recordId"] = record["recordId"];
    order["recordType"] = record["recordType"];
    Json::Value theirs = stage.second.Do(order);
    Json::Value merged = WithField(theirs, OFFICIAL_NAME, mine["fields"][OFFICIAL_NAME].asString());
    Json::Value saved =
        SaveRecord(stage, stage.second, OnlyField(merged, OFFICIAL_NAME), Nubis::NB_SAVE_CHANGED_FIELDS);
    stage.report.Check("B fetched the record and saved its own field alone", saved["saved"].asBool());
    AwaitBoth(stage, saved);
    Json::Value expected = WithField(mine, NAME, record["fields"][NAME].asString() + ", says A")["fields"];
    CheckBoth(stage, "both changes are in the record", record, expected);
}

void Overwrite(DemoStage &stage, const Json::Value &record)
{
    Json::Value mine = ChangeOnBoth(stage, record);
    Json::Value saved = SaveRecord(stage, stage.second, mine, Nubis::NB_SAVE_OVERWRITE);
    stage.report.Check("B overwrote the whole record with what it had before", saved["saved"].asBool());
    AwaitBoth(stage, saved);
    CheckBoth(stage, "A's change is gone, B's is there", record, mine["fields"]);
}

} // namespace

void PlayConflictScene(DemoStage &stage)
{
    stage.report.Step("Both change the same record from the same version: B merges");
    Json::Value order = Order("pick");
    order["recordType"] = "Country";
    order["count"] = 2;
    Json::Value records = stage.first.Do(order)["records"];
    Merge(stage, records[0]);
    stage.report.Step("The same with another record: B overwrites");
    Overwrite(stage, records[1]);
}

} // namespace NubisTool
