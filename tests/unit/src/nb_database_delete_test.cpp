// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include "blocking_calls.h"
#include "fake_drive_service.h"
#include "nb_container.h"
#include "nubis_kit.h"
#include "record_builder.h"

namespace Nubis {
namespace {
using NubisTest::FakeDriveService;
using NubisTest::RecordBuilder;
using testing::ElementsAre;

constexpr const char *CATALOGUE = R"({"code": 0, "appInfo": [{"bundleName": "bundle", "defaultContainer": {"name": "c",
    "schema": {"version": 1, "recordTypes": [{"recordType": "a", "fields": []}, {"recordType": "b", "fields": []}]}}}]})";

// Takes every record of a request for granted.
std::string AllDeleted(const Json::Value &request)
{
    Json::Value reply(Json::objectValue);
    for (const Json::Value &id : request["recordIds"]) {
        Json::Value record(Json::objectValue);
        record["code"] = 0;
        record["recordId"] = id;
        record["recordType"] = request["recordType"];
        record["deleted"] = true;
        record["version"] = 8;
        reply["records"].append(record);
    }
    return reply.toStyledString();
}

std::vector<std::string> TextsOf(const Json::Value &array)
{
    std::vector<std::string> texts;
    for (const Json::Value &element : array) {
        texts.push_back(element.asString());
    }
    return texts;
}

class DeleteRecordsTest : public testing::Test {
protected:
    DeleteRecordsTest() : user_(NextUser()), service_(FakeDriveService::Offer(user_))
    {
        service_->Answer("GetCloudAppInfo", CATALOGUE);
        container_ = NubisNative::GetInstance(user_)->GetDefaultContainer("bundle");
    }

    ~DeleteRecordsTest() override
    {
        FakeDriveService::Withdraw(user_);
    }

    // A kit lives as long as the process, so every test has a user of its own.
    static int NextUser()
    {
        static int lastUser = 730;
        return ++lastUser;
    }

    NubisTest::Saved Delete(std::vector<NBRecord> records)
    {
        return NubisTest::Delete(container_->GetPrivateDatabase(), std::move(records), NB_SAVE_CHANGED_FIELDS);
    }

    int user_;
    OHOS::sptr<FakeDriveService> service_;
    std::shared_ptr<NBContainer> container_;
};

TEST_F(DeleteRecordsTest, SendsARequestForEachTypeInOrderWithAllItsRecords)
{
    service_->AnswerWith("deleteRecords", AllDeleted);

    const NubisTest::Saved deleted = Delete({RecordBuilder("b", "b1").AtVersion(3), RecordBuilder("a", "a2"),
        RecordBuilder("b", "b0"), RecordBuilder("a", "a1").With("x", NBRecordField(5))});

    EXPECT_FALSE(deleted.error.HasError());
    ASSERT_EQ(deleted.results.size(), 4U);
    for (const auto &[id, result] : deleted.results) {
        EXPECT_FALSE(result.HasError()) << id;
        EXPECT_TRUE(result.GetRecord().GetIsDelete()) << id;
        EXPECT_EQ(result.GetRecord().GetVersion(), 8U) << id;
    }
    const std::vector<Json::Value> requests = service_->Requests("deleteRecords");
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0]["recordType"], "a");
    EXPECT_THAT(TextsOf(requests[0]["recordIds"]), ElementsAre("a2", "a1"));
    EXPECT_EQ(requests[0]["records"][1]["recordId"], "a1");
    EXPECT_EQ(requests[0]["records"][1]["x"], 5);
    EXPECT_EQ(requests[1]["recordType"], "b");
    EXPECT_THAT(TextsOf(requests[1]["recordIds"]), ElementsAre("b1", "b0"));
    EXPECT_EQ(requests[1]["records"][0]["baseVersion"].asInt(), 3);
    for (const Json::Value &request : requests) {
        EXPECT_EQ(request["savePolicy"], 1);
        EXPECT_EQ(request["databaseType"], 1);
        EXPECT_EQ(request["bundleName"], "bundle");
        EXPECT_EQ(request["containerName"], "c");
        EXPECT_TRUE(request["lockSessionId"].isString());
        EXPECT_FALSE(request["traceId"].asString().empty());
        EXPECT_FALSE(request["prepareTraceId"].asString().empty());
        EXPECT_FALSE(request.isMember("taskId"));
    }
}

TEST_F(DeleteRecordsTest, AFailedTypeMarksItsRecordsAndOnlyTheLastOneTheCall)
{
    service_->AnswerWith("deleteRecords", [](const Json::Value &request) {
        bool fails = request["recordType"] == "a";
        return fails ? R"({"code": 5, "error": {"code": 1201, "description": "disk"}})" : AllDeleted(request);
    });

    const NubisTest::Saved deleted = Delete({RecordBuilder("a", "a1").AtVersion(4), RecordBuilder("b", "b1")});

    EXPECT_FALSE(deleted.error.HasError());
    EXPECT_EQ(deleted.results.at("a1").GetServerErrorCode(), 1201);
    EXPECT_EQ(deleted.results.at("a1").GetRecord().GetVersion(), 4U);
    EXPECT_FALSE(deleted.results.at("b1").HasError());

    service_->Answer("deleteRecords", R"({"code": 5, "error": {"code": 1201}})");
    EXPECT_EQ(Delete({RecordBuilder("b", "b1")}).error.GetServerErrorCode(), 1201);
}

TEST_F(DeleteRecordsTest, WhatTheServiceDoesNotAnswerForHasNoResult)
{
    service_->Answer("deleteRecords",
        R"({"records": [{"code": 1106, "recordId": "a1", "error": {"description": "changed"}}, {"code": 0}, 7]})");

    const NubisTest::Saved deleted = Delete({RecordBuilder("a", "a1"), RecordBuilder("a", "a2")});

    EXPECT_FALSE(deleted.error.HasError());
    ASSERT_EQ(deleted.results.size(), 1U);
    EXPECT_EQ(deleted.results.at("a1").GetErrorMsg(), "changed");
    EXPECT_TRUE(Delete({}).results.empty());
    EXPECT_EQ(service_->Requests("deleteRecords").size(), 1U);
}

TEST_F(DeleteRecordsTest, AFieldThatCannotBeWrittenDoesNotKeepARecordFromBeingDeleted)
{
    service_->AnswerWith("deleteRecords", AllDeleted);
    NBSchemaField number;
    number.type = NB_FIELD_INTEGER;
    NBRecordField broken("text");
    ASSERT_FALSE(broken.ParseFromJsonValue(number, Json::Value("no number")));

    const NubisTest::Saved deleted = Delete({RecordBuilder("a", "a1").AtVersion(2).With("broken", broken)});

    EXPECT_FALSE(deleted.results.at("a1").HasError());
    const Json::Value sent = service_->Requests("deleteRecords").back()["records"][0];
    EXPECT_EQ(sent["baseVersion"].asInt(), 2);
    EXPECT_FALSE(sent.isMember("broken"));
}
} // namespace
} // namespace Nubis
