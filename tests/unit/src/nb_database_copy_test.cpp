// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::Copy;
using NubisTest::Note;
using NubisTest::ParseJson;
using testing::Contains;
using testing::ElementsAre;
using testing::Key;

class DatabaseCopyTest : public NubisTest::DatabaseTest {
protected:
    static NBCopyRecord Order(const std::string &recordId, const std::string &source)
    {
        return {Note("copy of " + source).Id(recordId), source};
    }
};

TEST_F(DatabaseCopyTest, OrdersCarryTheirSources)
{
    service_->Answer("copyRecords", R"({"records": [
        {"code": 0, "recordId": "server1", "localRecordId": "r1", "recordType": "note", "version": 1}, 7]})");

    const auto copied = Copy(database_, {Order("r1", "s1"), Order("", "s2")});

    const Json::Value records = LastRequest("copyRecords")["records"];
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0]["srcRecordId"], "s1");
    EXPECT_EQ(records[0]["title"], "copy of s1");
    EXPECT_EQ(records[1]["recordId"], "") << "the service makes the id";
    EXPECT_EQ(OwnMembers("copyRecords", {"records", "prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "",
        "databaseType": 1})"));
    EXPECT_FALSE(copied.error.HasError());
    ASSERT_EQ(copied.results.size(), 2U);
    EXPECT_FALSE(copied.results.at("server1").HasError());
    EXPECT_EQ(copied.results.at("server1").GetRecord().GetVersion(), 1U);
    // Without an id in the reply there is a made one, and what was ordered.
    const auto &[id, result] = *copied.results.begin();
    EXPECT_EQ(id.size(), 33U);
    EXPECT_EQ(result.GetLocalErrorCode(), 24);
    EXPECT_EQ(NubisTest::TitleOf(result.GetRecord()), "copy of s2");
}

TEST_F(DatabaseCopyTest, WithoutAnIdOfAnyKindTheNumberNamesAResult)
{
    SetRules();
    service_->Answer("copyRecords", R"({"records": [{"code": 0, "recordType": "note"}, {}, {"recordId": "x"}]})");
    EXPECT_THAT(Copy(database_, {Order("a", "s"), Order("b", "s"), Order("c", "s")}).results,
        ElementsAre(Key("0"), Key("1"), Key("x")));
    service_->Answer("copyRecords", R"({"code": 1})");
    EXPECT_THAT(Copy(database_, {Order("a", "s"), Order("", "s")}).results, ElementsAre(Key("1"), Key("a")));
}

TEST_F(DatabaseCopyTest, AnAnswerThatDoesNotFitIsAnErrorOfEveryOrder)
{
    NubisTest::LogCapture log;
    for (const char *reply : {R"({"records": {}})", "7", R"({"records": [{"code": 0, "recordId": "x"}]})",
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
    EXPECT_EQ(database_->CopyRecord(nullptr, Order("", "s"), nullptr), 0);
    service_->WaitFor("copyRecords", 2);
}
} // namespace
