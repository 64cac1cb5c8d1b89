// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "blocking_calls.h"
#include "kit_fixture.h"
#include "log_capture.h"
#include "note_builder.h"

namespace {
using namespace Nubis;
using NubisTest::Copy;
using NubisTest::Note;
using NubisTest::ParseJson;
using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using testing::UnorderedElementsAre;

class DatabaseCopyTest : public NubisTest::DatabaseTest {
protected:
    static NBCopyRecord Order(const std::string &recordId, const std::string &source)
    {
        return {Note("copy of " + source).Id(recordId), source};
    }

    // From now on ids cannot be made.
    void LoseRules()
    {
        service_->Answer("getRecordIdRules", R"({"ruleId": 9})");
        database_->GetRecordIdRules();
    }
};

TEST_F(DatabaseCopyTest, OrdersCarryTheirSources)
{
    service_->Answer("copyRecords", R"({"records": [
        {"code": 0, "recordId": "server1", "localRecordId": "r1", "recordType": "note", "version": 1}, 7,
        {"code": 5, "error": {"description": "no"}}]})");

    const auto copied = Copy(database_, {Order("r1", "s1"), Order("", "s2"), Order("r3", "s3")});

    Json::Value request = LastRequest("copyRecords");
    ASSERT_EQ(request["records"].size(), 3U);
    EXPECT_EQ(request["records"][0]["srcRecordId"], "s1");
    EXPECT_EQ(request["records"][0]["title"], "copy of s1");
    EXPECT_EQ(request["records"][1]["recordId"], "") << "the service makes the id";
    for (const char *name : {"records", "traceId", "prepareTraceId", "nbVersion", "saVersion"}) {
        EXPECT_TRUE(request.isMember(name)) << name;
        request.removeMember(name);
    }
    EXPECT_EQ(request, ParseJson(R"({"function": "copyRecords", "bundleName": "com.example.notes",
        "containerName": "main", "lockSessionId": "", "databaseType": 1, "syncDemon": "1"})"));
    EXPECT_FALSE(copied.error.HasError());
    ASSERT_EQ(copied.results.size(), 3U);
    EXPECT_FALSE(copied.results.at("server1").HasError());
    EXPECT_EQ(copied.results.at("server1").GetRecord().GetVersion(), 1U);
    // Those without an id in the reply have a made one, and what was ordered.
    std::vector<std::string> titles;
    for (const auto &[id, result] : copied.results) {
        if (id != "server1") {
            EXPECT_EQ(id.size(), 33U);
            EXPECT_TRUE(result.HasError());
            titles.push_back(NubisTest::TitleOf(result.GetRecord()));
        }
    }
    EXPECT_THAT(titles, UnorderedElementsAre("copy of s2", "copy of s3"));
}

TEST_F(DatabaseCopyTest, WithoutAnIdOfAnyKindTheNumberNamesAResult)
{
    LoseRules();
    service_->Answer("copyRecords", R"({"records": [{"code": 0, "recordType": "note"}, {}, {"recordId": "x"}]})");
    EXPECT_THAT(Copy(database_, {Order("a", "s"), Order("b", "s"), Order("c", "s")}).results,
        ElementsAre(Key("0"), Key("1"), Key("x")));
    service_->Answer("copyRecords", R"({"code": 1})");
    EXPECT_THAT(Copy(database_, {Order("a", "s"), Order("", "s")}).results, ElementsAre(Key("1"), Key("a")));
}

TEST_F(DatabaseCopyTest, AnAnswerThatDoesNotFitIsAnErrorOfEveryOrder)
{
    NubisTest::LogCapture log;
    for (const char *reply : {R"({"records": {}})", "7", "[]", R"({"records": [{"code": 0, "recordId": "x"}]})",
             R"({"records": [{}, {}, {}]})", R"({"code": 5})", R"({"records": [)"}) {
        service_->Answer("copyRecords", reply);
        const auto copied = Copy(database_, {Order("r1", "s1"), Order("r2", "s2")});
        EXPECT_EQ(copied.error.GetLocalErrorCode(), 24) << reply;
        ASSERT_THAT(copied.results, ElementsAre(Key("r1"), Key("r2"))) << reply;
        EXPECT_EQ(copied.results.at("r2").GetLocalErrorCode(), 24) << reply;
        EXPECT_EQ(NubisTest::TitleOf(copied.results.at("r2").GetRecord()), "copy of s2") << reply;
    }
    const auto errors = log.TakeErrors();
    EXPECT_THAT(errors, Contains(testing::StartsWith("reply records error, error reply msg:{")));
    EXPECT_THAT(errors, Contains(testing::StartsWith("records size error, src size:2, reply size:3, reply msg:{")));

    service_->Answer("copyRecords", R"({"code": 7, "error": {"description": "full"}})");
    EXPECT_EQ(Copy(database_, {Order("r1", "s1")}).results.at("r1").GetErrorMsg(), "full");
    service_->Answer("copyRecords", R"({"records": []})");
    EXPECT_FALSE(Copy(database_, {}).error.HasError());
}

TEST_F(DatabaseCopyTest, OneOrderHasItsOwnCallback)
{
    service_->Answer("copyRecords", R"({"records": [{"code": 0, "recordId": "n1", "recordType": "note"}]})");
    std::promise<std::string> called;
    EXPECT_EQ(database_->CopyRecord(nullptr, Order("", "s"),
                  [&](auto, auto, std::string recordId, NBRecordOperResult result, const NBError &error) {
                      EXPECT_FALSE(result.HasError() || error.HasError());
                      called.set_value(std::move(recordId));
                  }),
        0);
    EXPECT_EQ(called.get_future().get(), "n1");
    EXPECT_FALSE(LastRequest("copyRecords").isMember("prepareTraceId"));
    EXPECT_EQ(database_->CopyRecord(nullptr, Order("", "s"), nullptr), 0);
    service_->WaitFor("copyRecords", 2);
}
} // namespace
