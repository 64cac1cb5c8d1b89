// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "blocking_calls.h"
#include "event_lines.h"
#include "kit_fixture.h"

namespace {
using namespace Nubis;
using NubisTest::TextsOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::map<std::string, std::string>;

std::string UserReply(const std::string &cloudUserId)
{
    return R"({"code": 0, "userInfo": {"userId": ")" + cloudUserId + R"(", "cloudStatus": 1}})";
}

// What the library reports of its own accord, and in whose name.
class OmReportTest : public NubisTest::DatabaseTest {
protected:
    OmReportTest()
    {
        service_->Answer("getReportInfo", R"({"reportUrl": "https://report.example", "reportParam": {}})");
        service_->Answer("GetCloudUserInfo", UserReply("ann"));
        // The kit alone keeps the container.
        container_ = nullptr;
    }

    NBError SignIn()
    {
        NBUserInfo userInfo;
        return kit_->GetCloudUserInfo(userInfo, false);
    }

    NBError FailRequest()
    {
        service_->Answer("getStartCursor", R"({"code": 7, "error": {"code": 2001, "description": "broken"}})");
        std::string cursor;
        return database_->GetStartCursor(NubisTest::ContextOf("20000_01_7_7", "20000_01_6_6"), "note", cursor);
    }

    std::vector<Json::Value> Events() const
    {
        return state_.Read("NubisSDK_" + std::to_string(userId_));
    }

    std::vector<std::string> EventUsers() const
    {
        std::vector<std::string> users;
        for (const auto &event : Events()) {
            users.push_back(event["fields"]["userID"].asString());
        }
        return users;
    }

    NubisTest::EventState state_;
};

TEST_F(OmReportTest, FailedRequestOfADatabaseTellsWhatFailed)
{
    ASSERT_FALSE(SignIn().HasError());
    ASSERT_EQ(FailRequest().GetServerErrorCode(), 2001);
    const auto events = Events();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0]["eventType"], 1);
    Texts fields = TextsOf(events[0]["fields"]);
    const Json::Value reply = JsonHelper::StringToJson(fields["extraInfo"]);
    EXPECT_EQ(reply["error"]["description"], "broken");
    EXPECT_EQ(reply["traceId"], "20000_01_7_7");
    fields.erase("extraInfo");
    const Texts expected{{"pn", "sync_com.example.notes"}, {"operationType", "20000"},
        {"business_id", "getStartCursor"}, {"traceID", "20000_01_7_7"}, {"prepareTraceId", "20000_01_6_6"},
        {"userID", "ann"}, {"returnCode", "2001"}, {"errorReason", "broken"}};
    EXPECT_EQ(fields, expected);

    // Without a reply there is no trace id, and without a context no prepare trace id.
    service_->Answer("getStartCursor", "");
    std::string cursor;
    ASSERT_EQ(database_->GetStartCursor("note", cursor).GetLocalErrorCode(), NB_LOCAL_EMPTY_REPLY);
    fields = TextsOf(Events().back()["fields"]);
    EXPECT_EQ(fields["traceID"] + fields["prepareTraceId"] + fields["operationType"], "");
    EXPECT_EQ(fields["returnCode"] + fields["extraInfo"], "11null");
}

TEST_F(OmReportTest, AFailureAfterTheReleaseOfTheContainerIsReported)
{
    ASSERT_FALSE(SignIn().HasError());
    size_t reported = 0;
    for (const char *reply : {R"({"code": 7})", R"({"records": [{"code": 7, "recordId": "bad"}]})"}) {
        database_ = kit_->GetDefaultContainer(NubisTest::BUNDLE)->GetPrivateDatabase();
        service_->AnswerWith("copyRecords", [this, reply](const Json::Value &) {
            kit_->ReleaseDefaultContainer(NubisTest::BUNDLE);
            return std::string(reply);
        });
        NubisTest::Copy(database_, {{}});
        EXPECT_EQ(Events().size(), ++reported) << reply;
    }
}

TEST_F(OmReportTest, EveryFailedRecordOfASuccessfulSaveIsReported)
{
    ASSERT_FALSE(SignIn().HasError());
    service_->Answer("saveRecords", R"({"code": 0, "records": [
        {"code": 0, "recordId": "good", "recordType": "note"},
        {"code": 3001, "recordId": "bad", "error": {"code": 3001, "description": "conflict"}},
        {"code": 5, "localRecordId": "worse"},
        {"code": 5, "recordId": "unknown"}]})");
    ASSERT_FALSE(NubisTest::Save(database_, {Existing("good"), Existing("bad"), Existing("worse")}).error.HasError());

    std::vector<Texts> reported;
    for (const auto &event : Events()) {
        reported.push_back(TextsOf(event["fields"]));
    }
    ASSERT_EQ(reported.size(), 2U);
    const Json::Value request = service_->Requests("saveRecords").at(0);
    for (const auto &fields : reported) {
        EXPECT_EQ(fields.at("business_id"), "saveRecords");
        EXPECT_EQ(fields.at("traceID"), request["traceId"].asString());
        EXPECT_EQ(fields.at("prepareTraceId"), request["prepareTraceId"].asString());
    }
    EXPECT_EQ(reported[0].at("returnCode"), "3001");
    EXPECT_EQ(reported[0].at("errorReason"), "conflict");
    EXPECT_EQ(JsonHelper::StringToJson(reported[0].at("extraInfo"))["recordId"], "bad");
    EXPECT_EQ(reported[1].at("returnCode"), "24");
    EXPECT_EQ(JsonHelper::StringToJson(reported[1].at("extraInfo"))["localRecordId"], "worse");
}

TEST_F(OmReportTest, FailedRequestsOfTheKitAreNotReported)
{
    ASSERT_FALSE(SignIn().HasError());
    service_->Answer("GetCloudAppSwitches", R"({"code": 7, "error": {"code": 2001, "description": "broken"}})");
    std::map<std::string, NBAppSwitchStatus> switches;
    EXPECT_TRUE(kit_->GetCloudAppSwitches({NubisTest::BUNDLE}, switches).HasError());
    EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(OmReportTest, EventsAreReportedInTheNameOfWhoeverIsSignedIn)
{
    FailRequest();
    EXPECT_THAT(EventUsers(), IsEmpty());
    SignIn();
    FailRequest();
    EXPECT_THAT(EventUsers(), ElementsAre("ann"));

    service_->Answer("GetCloudUserInfo", R"({"code": 7, "error": {"code": 2001, "description": "broken"}})");
    EXPECT_TRUE(SignIn().HasError());
    FailRequest();
    EXPECT_THAT(EventUsers(), ElementsAre("ann", "ann"));

    kit_->CleanCloudUserInfo();
    FailRequest();
    EXPECT_THAT(EventUsers(), ElementsAre("ann", "ann"));
    service_->Answer("GetCloudUserInfo", UserReply("bob"));
    SignIn();
    FailRequest();
    EXPECT_THAT(EventUsers(), ElementsAre("ann", "ann", "bob"));

    // The container must outlive its release here: a database without one cannot send at all.
    const auto container = kit_->GetDefaultContainer(NubisTest::BUNDLE);
    kit_->ReleaseCloudUserInfo();
    EXPECT_TRUE(FailRequest().IsServerError());
    EXPECT_THAT(EventUsers(), ElementsAre("ann", "ann", "bob"));
}
} // namespace
