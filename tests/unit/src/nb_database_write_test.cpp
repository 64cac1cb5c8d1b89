// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "crid.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::Note;
using NubisTest::ParseJson;
using NubisTest::Save;
using testing::ElementsAre;
using testing::Key;
using testing::UnorderedElementsAre;

class DatabaseWriteTest : public NubisTest::DatabaseTest {};

TEST_F(DatabaseWriteTest, TheRequestCarriesTheRecordsAndNewOnesGetIds)
{
    const auto saved =
        Save(database_, {Note("a"), Note("early").Id("r1"), Existing(""), Existing("r1")}, NB_SAVE_CHANGED_FIELDS);
    EXPECT_FALSE(saved.error.HasError());
    EXPECT_EQ(LastRequest("saveRecords")["syncDemon"], "1");
    const Json::Value records = LastRequest("saveRecords")["records"];
    ASSERT_EQ(records.size(), 4U);
    const std::string made = records[0]["recordId"].asString();
    EXPECT_NE(CridV5::DecodeCrid(made), nullptr);
    EXPECT_EQ(records[0]["title"], "a");
    EXPECT_EQ(records[2]["recordId"], "");
    EXPECT_EQ(OwnMembers("saveRecords", {"records", "prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "",
        "databaseType": 1, "savePolicy": 1})"));
    // Without "records" in the reply everything stays pending; of records of one id the later one.
    EXPECT_THAT(saved.results, UnorderedElementsAre(Key(made), Key("r1"), Key("")));
    for (const auto &[recordId, result] : saved.results) {
        EXPECT_EQ(result.GetLocalErrorCode(), 24);
        EXPECT_EQ(result.GetRecord().GetRecordId(), recordId);
    }
    EXPECT_EQ(NubisTest::TitleOf(saved.results.at("r1").GetRecord()), "old");

    EXPECT_TRUE(Save(database_, {}).results.empty());
    EXPECT_EQ(LastRequest("saveRecords")["records"], Json::Value(Json::arrayValue));
}

TEST_F(DatabaseWriteTest, RepliesAreMatchedByTheLocalId)
{
    NubisTest::LogCapture log;
    service_->Answer("saveRecords", R"({"records": [
        {"code": 0, "localRecordId": "r1", "recordId": "server1", "recordType": "note", "version": 9,
            "record": {"title": "new"}},
        7,
        {"code": 5, "recordId": "r2", "error": {"description": "no"}},
        {"code": 0, "recordId": "stranger", "recordType": "note"},
        {"localRecordId": "", "recordId": "r4"}]})");
    const auto saved = Save(database_, {Existing("r1"), Existing("r2"), Existing("r4"), Existing("r5")});
    EXPECT_FALSE(saved.error.HasError());
    const auto &first = saved.results.at("r1");
    EXPECT_FALSE(first.HasError());
    EXPECT_EQ(first.GetRecord().GetRecordId(), "server1");
    EXPECT_EQ(first.GetRecord().GetVersion(), 9U);
    EXPECT_EQ(NubisTest::TitleOf(first.GetRecord()), "new");
    EXPECT_EQ(saved.results.at("r2").GetServerErrorCode(), 5);
    EXPECT_EQ(saved.results.at("r4").GetLocalErrorCode(), 24);
    EXPECT_EQ(saved.results.at("r5").GetLocalErrorCode(), 24);
    EXPECT_EQ(saved.results.size(), 4U);
    EXPECT_THAT(log.TakeErrors(), testing::IsSupersetOf({"reply records error, unknown record id:",
                                      "reply records error, unknown record id:stranger"}));
}

TEST_F(DatabaseWriteTest, AResultIsJudgedByItsCodeAndItsError)
{
    struct Case {
        const char *members;
        int localCode;
        int serverCode;
        const char *recordId;
    };
    const auto saveOne = [this](Json::Value answer) {
        answer["localRecordId"] = "r1";
        Json::Value reply;
        reply["records"].append(std::move(answer));
        service_->Answer("saveRecords", NubisTest::JsonText(reply));
        return Save(database_, {Existing("r1", 3)}).results.at("r1");
    };
    // "error" counts by being there, whatever it is.
    const Case cases[] = {{R"({"code": 0, "recordId": "s1", "recordType": "cat"})", 3, 0, "s1"},
        {R"({"recordId": "s1"})", 24, 0, "s1"}, {R"({"code": "0", "recordType": "note"})", 24, 0, "r1"},
        {R"({"code": 7, "recordId": ""})", 24, 0, "r1"}, {R"({"code": 7, "recordId": "s1", "error": {}})", 0, 7, "s1"},
        {R"({"code": 7, "error": null})", 0, 7, "r1"}, {R"({"code": 7, "error": "text"})", 0, 7, "r1"}};
    for (const Case &one : cases) {
        const auto result = saveOne(ParseJson(one.members));
        EXPECT_EQ(result.GetLocalErrorCode(), one.localCode) << one.members;
        EXPECT_EQ(result.GetServerErrorCode(), one.serverCode) << one.members;
        EXPECT_EQ(result.GetRecord().GetRecordId(), one.recordId) << one.members;
        EXPECT_EQ(result.GetRecord().GetVersion(), 3U) << one.members;
    }
    for (const Json::Value &spoilt : NubisTest::SpoilEachMember(
             ParseJson(R"({"code": 7, "recordId": "r", "recordType": "note", "error": {}, "record": {"stars": 1}})"))) {
        NBRecord record;
        auto result = saveOne(spoilt);
        result.StealRecord(record);
        EXPECT_TRUE(result.HasError() || record.GetRecordType() == "note");
        EXPECT_EQ(result.GetRecord().GetRecordId() + result.GetRecord().GetRecordType(), "");
    }
}

TEST_F(DatabaseWriteTest, AFailureIsTheResultOfEveryRecord)
{
    service_->Answer("saveRecords", R"({"code": 5, "error": {"description": "full"}})");
    const auto saved = Save(database_, {Existing("r1"), Existing("r2")});
    EXPECT_EQ(saved.error.GetServerErrorCode(), 5);
    ASSERT_THAT(saved.results, ElementsAre(Key("r1"), Key("r2")));
    for (const auto &[recordId, result] : saved.results) {
        EXPECT_FALSE(result.IsLocalError());
        EXPECT_EQ(result.GetErrorMsg(), "full");
        EXPECT_EQ(NubisTest::TitleOf(result.GetRecord()), "old");
    }
    for (const char *reply : {"", "[]", "x", R"({"records": {}})", R"({"records": [)"}) {
        service_->Answer("saveRecords", reply);
        EXPECT_TRUE(Save(database_, {Existing("r1")}).results.at("r1").HasError()) << reply;
    }

    SetRules();
    const size_t asked = Asked("saveRecords");
    EXPECT_EQ(Save(database_, {Existing("r1"), Note("a")}).error.GetLocalErrorCode(), 11);
    EXPECT_EQ(Asked("saveRecords"), asked);
}

TEST_F(DatabaseWriteTest, ASingleRecordHasItsOwnCallback)
{
    service_->Answer("saveRecords", R"({"records": [{"code": 0, "recordId": "r1", "recordType": "note"}]})");
    std::promise<std::pair<std::string, bool>> called;
    EXPECT_EQ(database_->SaveRecord(nullptr, Existing("r1"), NB_SAVE_OVERWRITE,
                  [&](auto, auto database, std::string recordId, NBRecordOperResult result, const NBError &) {
                      EXPECT_EQ(database, database_);
                      called.set_value({recordId, result.HasError()});
                  }),
        0);
    EXPECT_EQ(called.get_future().get(), std::make_pair(std::string("r1"), false));
    EXPECT_FALSE(LastRequest("saveRecords").isMember("prepareTraceId"));

    int calls = 0;
    const auto adapted = RecordsToRecordCallback(
        [&calls](auto, auto, std::string recordId, NBRecordOperResult result, const NBError &error) {
            ++calls;
            EXPECT_EQ(recordId + result.GetRecord().GetRecordId(), "");
            EXPECT_EQ(error.GetLocalErrorCode(), 24);
        });
    const NBError error(NB_LOCAL_UNEXPECTED_REPLY);
    adapted(nullptr, nullptr, std::make_shared<NBResultMap>(), error);
    adapted(nullptr, nullptr, nullptr, error);
    adapted(nullptr, nullptr, std::make_shared<NBResultMap>(NBResultMap{{"a", {}}, {"b", {}}}), error);
    EXPECT_EQ(calls, 3);
    RecordsToRecordCallback(nullptr)(nullptr, nullptr, std::make_shared<NBResultMap>(), error);
}

TEST_F(DatabaseWriteTest, ACallbackMayBeMissingOrEndItsDatabase)
{
    EXPECT_EQ(database_->SaveRecords(nullptr, {}, NB_SAVE_OVERWRITE, nullptr), 0);
    service_->WaitFor("saveRecords", 1);

    std::promise<void> released;
    std::promise<bool> called;
    database_->SaveRecords(
        nullptr, {Existing("r1")}, NB_SAVE_OVERWRITE, [&](auto, auto database, auto results, const NBError &) {
            released.get_future().wait();
            std::weak_ptr<NBDatabase> last = database;
            database = nullptr;
            called.set_value(results->size() == 1 && !last.expired());
        });
    kit_->ReleaseCloudUserInfo();
    container_ = nullptr;
    database_ = nullptr;
    released.set_value();
    EXPECT_TRUE(called.get_future().get());
}
} // namespace
