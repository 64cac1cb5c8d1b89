// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "blocking_calls.h"
#include "crid.h"
#include "kit_fixture.h"
#include "log_capture.h"
#include "note_builder.h"

namespace {
using namespace Nubis;
using NubisTest::Note;
using NubisTest::ParseJson;
using NubisTest::Save;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::UnorderedElementsAre;

class DatabaseWriteTest : public NubisTest::DatabaseTest {
protected:
    static NBRecord Existing(const std::string &recordId)
    {
        return Note("old").Id(recordId).Existing(1);
    }
};

TEST_F(DatabaseWriteTest, TheRequestCarriesTheRecordsAndNewOnesGetIds)
{
    const auto saved = Save(database_, {Note("a"), Existing("r1"), Existing("")}, NB_SAVE_CHANGED_FIELDS);
    EXPECT_EQ(saved.started, 0);
    EXPECT_FALSE(saved.error.HasError());
    const Json::Value request = LastRequest("saveRecords");
    EXPECT_EQ(request["bundleName"], NubisTest::BUNDLE);
    EXPECT_EQ(request["containerName"], "main");
    EXPECT_EQ(request["lockSessionId"], "");
    EXPECT_EQ(request["databaseType"], 1);
    EXPECT_EQ(request["savePolicy"], 1);
    EXPECT_EQ(request["syncDemon"], "1");
    EXPECT_TRUE(request["traceId"].isString() && request["prepareTraceId"].isString());
    EXPECT_FALSE(request.isMember("taskId"));
    ASSERT_EQ(request["records"].size(), 3U);
    const std::string made = request["records"][0]["recordId"].asString();
    EXPECT_NE(CridV5::DecodeCrid(made), nullptr);
    EXPECT_EQ(request["records"][0]["title"], "a");
    EXPECT_EQ(request["records"][2]["recordId"], "");
    // Without "records" in the reply everything stays pending.
    EXPECT_THAT(saved.results, UnorderedElementsAre(Key(made), Key("r1"), Key("")));
    for (const auto &[recordId, result] : saved.results) {
        EXPECT_EQ(result.GetLocalErrorCode(), 24);
        EXPECT_EQ(result.GetRecord().GetRecordId(), recordId);
    }
    EXPECT_EQ(NubisTest::TitleOf(saved.results.at("r1").GetRecord()), "old");
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
        {"code": 0, "recordId": "r3", "recordType": "unknown"},
        {"localRecordId": "", "recordId": "r4"}]})");
    const auto saved =
        Save(database_, {Existing("r1"), Existing("r2"), Existing("r3"), Existing("r4"), Existing("r5")});
    EXPECT_FALSE(saved.error.HasError());
    const auto &first = saved.results.at("r1");
    EXPECT_FALSE(first.HasError());
    EXPECT_EQ(first.GetRecord().GetRecordId(), "server1");
    EXPECT_EQ(first.GetRecord().GetVersion(), 9U);
    EXPECT_EQ(NubisTest::TitleOf(first.GetRecord()), "new");
    EXPECT_EQ(saved.results.at("r2").GetServerErrorCode(), 5);
    EXPECT_EQ(saved.results.at("r3").GetLocalErrorCode(), 3);
    EXPECT_EQ(saved.results.at("r4").GetLocalErrorCode(), 24);
    EXPECT_EQ(saved.results.at("r5").GetLocalErrorCode(), 24);
    EXPECT_EQ(saved.results.size(), 5U);
    EXPECT_THAT(log.TakeErrors(), testing::IsSupersetOf({"reply records error, unknown record id:",
                                      "reply records error, unknown record id:stranger"}));
}

TEST_F(DatabaseWriteTest, AFailedSendIsTheResultOfEveryRecord)
{
    service_->Answer("saveRecords", R"({"code": 5, "error": {"description": "full"}})");
    const auto saved = Save(database_, {Existing("r1"), Existing("r2")});
    EXPECT_EQ(saved.error.GetServerErrorCode(), 5);
    for (const auto &[recordId, result] : saved.results) {
        EXPECT_FALSE(result.IsLocalError());
        EXPECT_EQ(result.GetErrorMsg(), "full");
        EXPECT_EQ(NubisTest::TitleOf(result.GetRecord()), "old");
    }
    EXPECT_EQ(saved.results.size(), 2U);
}

TEST_F(DatabaseWriteTest, NothingIsSentWithoutIds)
{
    service_->Answer("getRecordIdRules", R"({"ruleId": 9})");
    database_->GetRecordIdRules();
    EXPECT_EQ(Save(database_, {Existing("r1"), Note("a")}).error.GetLocalErrorCode(), 11);
    EXPECT_EQ(Asked("saveRecords"), 0U);
}

TEST_F(DatabaseWriteTest, NoRecordsAreAnEmptyArray)
{
    EXPECT_THAT(Save(database_, {}).results, IsEmpty());
    EXPECT_EQ(LastRequest("saveRecords")["records"], Json::Value(Json::arrayValue));
}

TEST_F(DatabaseWriteTest, RecordsOfOneIdShareTheLaterResult)
{
    const auto saved = Save(database_, {Note("a").Id("r"), Note("b").Id("r")});
    EXPECT_EQ(LastRequest("saveRecords")["records"].size(), 2U);
    ASSERT_THAT(saved.results, ElementsAre(Key("r")));
    EXPECT_EQ(NubisTest::TitleOf(saved.results.at("r").GetRecord()), "b");
}

TEST_F(DatabaseWriteTest, BrokenRepliesEndEverySave)
{
    const Json::Value good = ParseJson(R"({"code": 0, "localRecordId": "r1", "recordId": "s", "recordType": "note",
        "version": 1, "error": {}, "record": {"title": "t", "stars": 1}, "relations": [], "createInfo": {}})");
    for (const auto &spoilt : NubisTest::SpoilEachMember(good)) {
        Json::Value reply;
        reply["records"].append(spoilt);
        reply["records"].append(ParseJson(R"({"code": 0, "recordId": "r2", "recordType": "note"})"));
        const std::string text = NubisTest::JsonText(reply);
        service_->Answer("saveRecords", text);
        const auto saved = Save(database_, {Existing("r1"), Existing("r2")});
        // The text of an infinite number ends what can be read.
        const bool isCut = text.find("1e+9999") != std::string::npos;
        EXPECT_EQ(saved.results.at("r2").HasError(), isCut) << text.substr(0, 200);
    }
    for (const char *reply : {"", "[]", "7", "x", R"({"records": {}})", R"({"records": null})", R"({"records": [)"}) {
        service_->Answer("saveRecords", reply);
        const auto saved = Save(database_, {Existing("r1")});
        EXPECT_TRUE(saved.results.at("r1").HasError()) << reply;
    }
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
