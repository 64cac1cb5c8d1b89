// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <vector>

#include "demo_orders.h"
#include "record_json.h"

namespace NubisTool {
namespace {

constexpr const char *NAME = "name";
constexpr const char *OFFICIAL_NAME = "officialName";

std::string SaidBy(const Json::Value &record, const char *field, const char *device)
{
    return record["fields"]["name"].asString() + " (" + field + " by " + device + ")";
}

// Both hold the record in the same version, and A changes a field. Returns what B held before, with B's own change.
Json::Value ChangeOnBoth(
    DemoStage &stage, const Json::Value &record, const char *fieldOfFirst, const char *fieldOfSecond)
{
    Json::Value ofFirst = HeldBy(stage.first, record);
    Json::Value ofSecond = HeldBy(stage.second, record);
    stage.report.Text("record that both change", CompactText(ofFirst));
    stage.report.Check("both hold the same", ofFirst == ofSecond);
    Json::Value saved = SaveRecord(stage, stage.first,
        WithField(ofFirst, fieldOfFirst, SaidBy(ofFirst, fieldOfFirst, "A")), Nubis::NB_SAVE_IF_UNCHANGED);
    stage.report.Check(std::string("A was first, with the field ") + fieldOfFirst, saved["saved"].asBool());
    AwaitBoth(stage, saved);
    return WithField(ofSecond, fieldOfSecond, SaidBy(ofSecond, fieldOfSecond, "B"));
}

void CheckBoth(
    DemoStage &stage, const std::string &expectation, const Json::Value &record, const Json::Value &expectedFields)
{
    stage.report.Text("the record now", CompactText(HeldBy(stage.second, record)));
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
    Json::Value mine = ChangeOnBoth(stage, record, NAME, OFFICIAL_NAME);
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
    Json::Value expected = WithField(mine, NAME, SaidBy(record, NAME, "A"))["fields"];
    CheckBoth(stage, "both changes are in the record", record, expected);
}

void Overwrite(DemoStage &stage, const Json::Value &record)
{
    // Without the field that A changes: were B's record only merged into the present one, that field would be there.
    Json::Value mine = ChangeOnBoth(stage, record, OFFICIAL_NAME, NAME);
    mine["fields"].removeMember(OFFICIAL_NAME);
    Json::Value saved = SaveRecord(stage, stage.second, mine, Nubis::NB_SAVE_OVERWRITE);
    stage.report.Check("B overwrote the whole record with its own, which lacks A's field", saved["saved"].asBool());
    AwaitBoth(stage, saved);
    CheckBoth(stage, "A's field is gone, B's is there", record, mine["fields"]);
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
