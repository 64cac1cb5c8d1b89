// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/faults.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::ParseJson;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class KitSendTest : public NubisTest::KitTest {
protected:
    struct Judged {
        NBError error;
        Json::Value reply;
    };

    Judged Send(const std::string &replyText)
    {
        service_->Answer("probe", replyText);
        Judged judged;
        judged.reply = "as it was";
        judged.error =
            kit_->SendDataToCloudSrv(ParseJson(R"({"function": "probe", "traceId": "t"})"), judged.reply, 60);
        return judged;
    }
};

TEST_F(KitSendTest, TheEnvelopeIsAddedToACopy)
{
    kit_->SetSaVersion(42);
    for (const char *text : {R"({"function": "probe"})", R"({"function": "probe", "traceId": ""})"}) {
        const Json::Value request = ParseJson(text);
        Json::Value reply;
        EXPECT_FALSE(kit_->SendDataToCloudSrv(request, reply, -1).HasError());
        EXPECT_EQ(request, ParseJson(text));
        const Json::Value sent = LastRequest("probe");
        EXPECT_THAT(sent["traceId"].asString(), MatchesRegex("30000_01_[0-9]+_[0-9]+"));
        EXPECT_EQ(reply["traceId"], sent["traceId"]);
        EXPECT_EQ(sent["nbVersion"], "5.3.1.300");
        EXPECT_EQ(sent["saVersion"], 42);
        EXPECT_FALSE(sent.isMember("uuid"));
    }
    Json::Value reply;
    kit_->SendDataToCloudSrv(ParseJson(R"({"function": "probe", "traceId": "mine"})"), reply, -1);
    EXPECT_EQ(LastRequest("probe")["traceId"], "mine");
    EXPECT_EQ(reply["traceId"], "mine");
}

TEST_F(KitSendTest, OnlyANonZeroIntegerCodeIsAFailure)
{
    for (const char *text : {R"({})", R"({"code": 0})", R"({"code": "5"})", R"({"code": null})", R"({"code": 1.5})",
             R"({"error": {"code": 5}})", "not JSON", R"("text)", "null"}) {
        const auto judged = Send(text);
        EXPECT_FALSE(judged.error.HasError()) << text;
        EXPECT_EQ(judged.reply["traceId"], "t") << text;
    }
    // These take no trace id and are the operation's to refuse.
    for (const char *text : {"[]", R"([{"code": 5}])", "5", R"("text")", "true"}) {
        const auto judged = Send(text);
        EXPECT_FALSE(judged.error.HasError()) << text;
        EXPECT_EQ(judged.reply, ParseJson(text)) << text;
    }
    // Whatever could be read of these is the reply.
    EXPECT_FALSE(Send(NubisTest::JsonText(NubisTest::NestJson(1500))).error.HasError());
    EXPECT_EQ(Send(R"({"a": 1, "b": [2, {"c")").reply["a"], 1);
}

TEST_F(KitSendTest, FailuresOfTheServiceBecomeServerErrors)
{
    NubisTest::LogCapture log;
    const auto described = Send(R"({"code": 5, "error": {"description": "no space", "errorType": 2}})");
    EXPECT_TRUE(described.error.IsServerError());
    EXPECT_FALSE(described.error.IsLocalError());
    EXPECT_EQ(described.error.GetServerErrorCode(), 5);
    EXPECT_EQ(described.error.GetErrorMsg(), "no space");
    EXPECT_THAT(log.TakeErrors(), IsEmpty());

    const auto plain = Send(R"({"code": 5})");
    EXPECT_FALSE(plain.error.IsServerError());
    EXPECT_EQ(plain.error.GetLocalErrorCode(), 24);
    EXPECT_THAT(log.TakeErrors(), ElementsAre(R"(recv unexpected server response, recv:{"code": 5})"));
}

TEST_F(KitSendTest, RequestsThatGetNoAnswerLeaveTheReply)
{
    const auto empty = Send("");
    EXPECT_EQ(empty.error.GetLocalErrorCode(), 11);
    EXPECT_EQ(empty.reply, "as it was");
    {
        Host::FaultPlan plan;
        plan.sendFailure = 1000;
        const Host::FaultScope faults(plan);
        const auto lost = Send("{}");
        EXPECT_EQ(lost.error.GetLocalErrorCode(), 2);
        EXPECT_EQ(lost.reply, "as it was");
    }
    const auto nobody = NubisNative::GetInstance(NextUser());
    Json::Value reply("as it was");
    EXPECT_EQ(nobody->SendDataToCloudSrv(Json::Value(Json::objectValue), reply, 60).GetLocalErrorCode(), 1);
    for (const Json::Value &noObject : {Json::Value(5), Json::Value("text"), Json::Value(Json::arrayValue)}) {
        EXPECT_EQ(kit_->SendDataToCloudSrv(noObject, reply, 60).GetLocalErrorCode(), 3);
    }
    EXPECT_EQ(reply, "as it was");
}
} // namespace
