// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"
#include "signing_key.h"

namespace {
using namespace Nubis;
using NubisTest::ParseJson;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class NotificationTest : public NubisTest::KitTest {
protected:
    void UseKey(const std::string &hex)
    {
        Json::Value reply;
        reply["userInfo"]["pushKeyValue"] = hex;
        NBUserInfo userInfo;
        kit_->GetUserInfoFromJson(reply, userInfo);
    }

    int Verify(const Json::Value &notification)
    {
        const NBError error = kit_->VerifyNotificationFromJson(notification);
        EXPECT_FALSE(error.IsServerError());
        return error.GetLocalErrorCode();
    }

    NubisTest::SigningKey key_;
    NubisTest::LogCapture log_;
};

TEST_F(NotificationTest, TheSignatureCoversEveryTextMember)
{
    UseKey(key_.PublicHex());
    Json::Value notification = ParseJson(R"({"b": "2", "a": "1", "B": "", "n": 5, "o": {"x": 1}, "ab": "&="})");
    notification["signV2"] = key_.SignHex("B=&a=1&ab=&=&b=2&n=&o=");
    EXPECT_EQ(Verify(notification), 0);
    EXPECT_THAT(log_.Take(LOG_INFO), ElementsAre("verify notification success"));
    notification["x-ov-trace-id"] = "added on the way";
    notification["n"] = 6;
    EXPECT_EQ(Verify(notification), 0);

    for (const auto &[name, value] : std::map<std::string, std::string>{{"a", "2"}, {"n", "5"}, {"new", ""}}) {
        Json::Value changed = notification;
        changed[name] = value;
        EXPECT_EQ(Verify(changed), 24) << name;
    }
    Json::Value shortened = notification;
    shortened.removeMember("B");
    EXPECT_EQ(Verify(shortened), 24);
    log_.TakeErrors();
    notification["a"] = "2";
    EXPECT_EQ(Verify(notification), 24);
    EXPECT_THAT(log_.TakeErrors(),
        ElementsAre("verify notification failed, verify failed, key:" + key_.PublicHex() +
                    ", signdata:" + notification["signV2"].asString() + ", verifyData:B=&a=2&ab=&=&b=2&n=&o="));
    Json::Value alone;
    alone["signV2"] = key_.SignHex("");
    EXPECT_EQ(Verify(alone), 0);
}

TEST_F(NotificationTest, WithoutKeyOrSignatureThereIsNothingToVerify)
{
    const Json::Value good = ParseJson(R"({"a": "1", "signV2": "00ff"})");
    const std::string start = "verify notification failed, pubkey or sigin is empty, key:";
    EXPECT_EQ(Verify(good), 23);
    EXPECT_THAT(log_.TakeErrors(), ElementsAre(start + ", verifyData:a=1"));
    UseKey(key_.PublicHex());
    for (const Json::Value &signature : {Json::Value(), Json::Value(5), Json::Value(""), Json::Value("0")}) {
        Json::Value notification = good;
        notification["signV2"] = signature;
        EXPECT_EQ(Verify(notification), 23);
        EXPECT_THAT(log_.TakeErrors(), ElementsAre(start + key_.PublicHex() + ", verifyData:a=1"));
    }
    for (const Json::Value &json : {Json::Value(), Json::Value("{}"), Json::Value(Json::arrayValue)}) {
        EXPECT_EQ(Verify(json), 23);
        EXPECT_THAT(log_.TakeErrors(), ElementsAre("verify notification failed, data is not object"));
    }
}

TEST_F(NotificationTest, BadKeysAndSignaturesVerifyNothing)
{
    Json::Value notification = ParseJson(R"({"a": "1"})");
    notification["signV2"] = key_.SignHex("a=1");
    const std::string hex = key_.PublicHex();
    for (const std::string &key : {std::string("00"), hex.substr(0, 100), hex.substr(2), std::string(200000, 'f')}) {
        UseKey(key);
        EXPECT_EQ(Verify(notification), 24);
        EXPECT_THAT(log_.TakeErrors(), testing::Contains("verify data failed, convertKey failed, code: -10001"));
    }
    const NubisTest::SigningKey small(2048);
    UseKey(small.PublicHex());
    EXPECT_EQ(Verify(notification), 24) << "another key";
    UseKey(hex);
    const std::string signature = notification["signV2"].asString();
    // Not without its first byte: where that is zero, the number stays the same.
    for (const std::string &bad : {signature + "00", signature.substr(0, signature.size() - 2), small.SignHex("a=1"),
             std::string(200000, '0'), signature.substr(0, 100) + "zz" + signature.substr(102)}) {
        notification["signV2"] = bad;
        EXPECT_EQ(Verify(notification), 24);
    }
    notification["signV2"] = signature;
    EXPECT_EQ(Verify(notification), 0);
}

TEST_F(NotificationTest, AnEventIsDecodedFromTextInText)
{
    Json::Value payload = ParseJson(R"({"accountId": "acc", "bundleName": "b", "containerName": "c"})");
    payload["databaseScopes"] = R"(["private", "public", 5, "shared"])";
    payload["recordTypes"] = R"(["note", null, "tag"])";
    payload["properties"] = R"({"k": "v", "n": 1})";
    payload["context"] = R"({"prepareTraceId": "p"})";
    Json::Value notification;
    notification["data"] = NubisTest::JsonText(payload);
    NBRecordChangeEvent event;
    EXPECT_FALSE(kit_->ResolveNotificationEvent(NubisTest::JsonText(notification), event).HasError());
    EXPECT_EQ(event.accountId + event.bundleName + event.containerName, "accbc");
    EXPECT_THAT(event.databaseScopes, ElementsAre(NB_DATABASE_PRIVATE, NB_DATABASE_SHARED));
    EXPECT_THAT(log_.TakeErrors(), ElementsAre("resolve notification failed, unknown scope:public"));
    EXPECT_THAT(event.recordTypes, ElementsAre("note", "tag"));
    EXPECT_THAT(event.properties, ElementsAre(Pair("k", "v")));
    EXPECT_EQ(event.prepareTraceId, "p");

    std::vector<Json::Value> payloads = NubisTest::SpoilEachMember(payload);
    for (const std::string &name : payload.getMemberNames()) {
        for (const Json::Value &hostile : NubisTest::HostileJson()) {
            payloads.push_back(payload);
            payloads.back()[name] = NubisTest::JsonText(hostile);
        }
    }
    for (const Json::Value &spoilt : payloads) {
        notification["data"] = NubisTest::JsonText(spoilt);
        EXPECT_FALSE(kit_->ResolveNotificationEvent(NubisTest::JsonText(notification), event).HasError());
    }
    for (const char *text : {"", "{", "[]", R"({"data": 5})", R"({"data": "{"})"}) {
        NBRecordChangeEvent nothing;
        EXPECT_FALSE(kit_->ResolveNotificationEvent(text, nothing).HasError());
        EXPECT_THAT(nothing.databaseScopes, IsEmpty());
    }
}
} // namespace
