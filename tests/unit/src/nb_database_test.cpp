// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "byte_buffer.h"
#include "crid.h"
#include "host/manual_clock.h"
#include "kit_fixture.h"
#include "log_capture.h"
#include "wall_clock.h"

namespace {
using namespace Nubis;
using NubisTest::ContextOf;
using NubisTest::ParseJson;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

class DatabaseObjectTest : public NubisTest::DatabaseTest {};

TEST_F(DatabaseObjectTest, OnlyThePrivateDatabaseAsksAtItsStart)
{
    EXPECT_EQ(Asked("getRecordIdRules"), 1U);
    EXPECT_EQ(Asked("getServiceKey"), 1U);
    EXPECT_EQ(OwnMembers("getServiceKey"),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "databaseType": 1})"));
}

TEST_F(DatabaseObjectTest, ADatabaseDoesNotKeepItsContainer)
{
    EXPECT_EQ(database_->GetUserId(), userId_);
    EXPECT_EQ(database_->GetNubisSyncDemon(), NB_SYNC_DEMON_FILE);
    kit_->ReleaseCloudUserInfo();
    container_ = nullptr;
    EXPECT_EQ(database_->GetUserId(), -1);
    EXPECT_EQ(database_->GetNubisSyncDemon(), NB_SYNC_DEMON_NONE);
    Json::Value request(Json::objectValue);
    Json::Value reply;
    EXPECT_EQ(database_->SendDataToCloudSrv(request, reply, 60).GetLocalErrorCode(), 11);
    EXPECT_EQ(request, ParseJson(R"({"syncDemon": "3"})"));
}

TEST_F(DatabaseObjectTest, ASendChangesTheRequestOnlyByTheDemon)
{
    const Json::Value before = ParseJson(R"({"function": "probe", "uuid": "mine", "saVersion": [1]})");
    Json::Value request = before;
    Json::Value reply;
    EXPECT_FALSE(database_->SendDataToCloudSrv(request, reply, 60).HasError());
    EXPECT_EQ(LastRequest("probe")["saVersion"], 0);
    request.removeMember("syncDemon");
    EXPECT_EQ(request, before);
}

// Before the database, so that the timer of its requests stands on this clock.
class Clocked {
protected:
    Clocked()
    {
        WallClock::SetSource([this]() {
            return std::chrono::duration_cast<std::chrono::milliseconds>(clock_.Now().time_since_epoch()).count();
        });
    }
    ~Clocked()
    {
        WallClock::SetSource(nullptr);
    }

    Host::ManualClock clock_;
};

class DatabaseTimeoutTest : protected Clocked, public NubisTest::DatabaseTest {};

TEST_F(DatabaseTimeoutTest, WritesAndFetchesOfManyHaveMoreTime)
{
    const std::map<std::string, std::function<void()>> calls = {
        {"saveRecords 180", [this]() { database_->SaveRecords(nullptr, {}, NB_SAVE_OVERWRITE, nullptr); }},
        {"modifyRecords 180",
            [this]() { database_->ModifyRecords(nullptr, {}, {}, NB_SAVE_OVERWRITE, true, nullptr); }},
        {"deleteRecords 180",
            [this]() { database_->DeleteRecords(nullptr, {NBRecord()}, NB_SAVE_OVERWRITE, nullptr); }},
        {"copyRecords 180", [this]() { database_->CopyRecords(nullptr, {}, nullptr); }},
        {"fetchRecordWithId 60", [this]() { database_->FetchRecordWithId(nullptr, NBRecord(), {}, nullptr); }},
        {"fetchRecordsWithQuery 60", [this]() { database_->FetchRecords(nullptr, "", {}, 1, "", nullptr); }},
        {"fetchDatabaseChanges 60", [this]() { database_->FetchDatabaseChanges(nullptr, "", {}, 1, "", nullptr); }}};
    for (const auto &[name, call] : calls) {
        const std::string function = name.substr(0, name.find(' '));
        std::promise<void> gate;
        service_->AnswerBehind(function, gate);
        NubisTest::LogCapture log;
        call();
        service_->WaitFor(function, 1);
        clock_.Advance(std::chrono::seconds(190));
        EXPECT_TRUE(log.WaitFor("is timeout, timeout:" + name.substr(function.size() + 1)));
        gate.set_value();
        EXPECT_TRUE(log.WaitFor("function:" + function + ", cost:190000 ms,"));
    }
}

TEST_F(DatabaseObjectTest, AContextGivesBothTraceIds)
{
    Json::Value request(Json::objectValue);
    database_->AddTraceId(nullptr, request);
    EXPECT_TRUE(request.empty());
    database_->AddTraceId(ContextOf("t", "p"), request);
    EXPECT_EQ(request, ParseJson(R"({"traceId": "t", "prepareTraceId": "p"})"));
    database_->AddTraceId(ContextOf("", ""), request);
    EXPECT_THAT(request["traceId"].asString(), MatchesRegex("30000_01_[0-9]+_[0-9]+"));
    EXPECT_THAT(request["prepareTraceId"].asString(), MatchesRegex("30000_01_[0-9]+_[0-9]+"));
    EXPECT_NE(request["traceId"], request["prepareTraceId"]);
}

TEST_F(DatabaseObjectTest, IdsFollowTheRules)
{
    const std::string five = database_->GenerateId("");
    ASSERT_NE(CridV5::DecodeCrid(five), nullptr);
    EXPECT_EQ(CridV5::DecodeCrid(five)->GetUpid(), 77U);
    EXPECT_EQ(database_->GenerateId("key"), CridV10::Encode(77, "key")->GetCrid());
    SetRules(R"({"ruleId": 1, "upid": "abc"})");
    ASSERT_NE(CridV1::DecodeCrid(database_->GenerateId("")), nullptr);
    EXPECT_EQ(CridV1::DecodeCrid(database_->GenerateId(""))->GetUpid(), 0U);
    SetRules(R"({"localRule": "UUID", "upid": "18446744073709551615"})");
    EXPECT_THAT(database_->GenerateId(""), MatchesRegex("[0-9a-f]{64}"));
    EXPECT_EQ(database_->GenerateId("key"), CridV10::Encode(UINT64_MAX, "key")->GetCrid());
}

TEST_F(DatabaseObjectTest, UnknownRulesMakeNoIds)
{
    NubisTest::LogCapture log;
    std::vector<std::string> ids = {"kept"};
    SetRules(R"({"ruleId": 3})");
    EXPECT_EQ(database_->GenerateIds(2, ids).GetLocalErrorCode(), 11);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("not support record rule id:3"));
    SetRules(R"({"localRule": "uuid", "ruleId": 1})");
    EXPECT_EQ(database_->GenerateIdsWithKey({"a", "", "b"}, ids).GetLocalErrorCode(), 11);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("unknown generate local rule:uuid"));
    EXPECT_THAT(ids, SizeIs(2));
    SetRules(R"({"ruleId": 5})");
    EXPECT_FALSE(database_->GenerateIds(3, ids).HasError());
    EXPECT_THAT(ids, SizeIs(5));
    for (const int count : {0, -1, INT32_MIN}) {
        EXPECT_FALSE(database_->GenerateIds(count, ids).HasError());
    }
    EXPECT_FALSE(database_->GenerateIdsWithKey({}, ids).HasError());
    EXPECT_THAT(ids, SizeIs(5));
}

TEST_F(DatabaseObjectTest, RulesAreFetchedWhenTheyAreMissing)
{
    database_->CleanUserInfo();
    EXPECT_FALSE(database_->GenerateId("").empty());
    EXPECT_FALSE(database_->GenerateId("").empty());
    EXPECT_EQ(Asked("getRecordIdRules"), 2U);
    std::string rootId;
    EXPECT_FALSE(database_->GetRootId(rootId).HasError());
    EXPECT_EQ(rootId, "root");
    EXPECT_EQ(Asked("getRecordIdRules"), 3U);

    database_->CleanUserInfo();
    service_->Answer("getRecordIdRules", R"({"code": 2})");
    NubisTest::LogCapture log;
    EXPECT_EQ(database_->GenerateId("key"), "");
    EXPECT_THAT(
        log.TakeErrors(), testing::IsSupersetOf({"get record id failed", "get record id failed, generate id failed"}));
    EXPECT_EQ(database_->GetRootId(rootId).GetLocalErrorCode(), 24);
    EXPECT_EQ(rootId, "root");
}

class ServiceKeyTest : public DatabaseObjectTest {
protected:
    static constexpr const char *UUID = "0123456789abcdef0123456789abcdef";

    static Json::Value Key(int type, const std::string &hex, const std::string &uuid = UUID)
    {
        ByteBuffer buffer;
        buffer.FromHexString(hex);
        Json::Value key;
        key["key"] = hex;
        key["userKeyGuid"] = uuid;
        key["userKeySHA256"] = buffer.GetBufSha256Base64();
        key["keyType"] = type;
        return key;
    }

    static std::string Keys(const std::vector<Json::Value> &keys)
    {
        Json::Value reply;
        for (const auto &key : keys) {
            reply["keys"].append(key);
        }
        return NubisTest::JsonText(reply);
    }

    template <size_t Size>
    static std::string Hex(const uint8_t (&bytes)[Size])
    {
        return ByteBuffer::ToHexString(bytes, Size);
    }
};

TEST_F(ServiceKeyTest, KeysAreCutToTheirPlace)
{
    const std::string longKey(80, 'a');
    service_->Answer("getServiceKey", Keys({5, Key(1, longKey), Key(2, "00"), Key(3, "0102")}));
    database_->GetServiceKey();
    const auto keys = database_->GetUserKey("");
    EXPECT_EQ(Hex(keys->efek), std::string(34, 'a'));
    EXPECT_EQ(Hex(keys->sfek), "0102" + std::string(62, '0'));
    EXPECT_STREQ(keys->efekUuid, UUID);
    EXPECT_STREQ(keys->sfekUuid, UUID);
    EXPECT_EQ(keys->userId, std::to_string(userId_));
    EXPECT_EQ(Asked("getServiceKey"), 2U);
}

TEST_F(ServiceKeyTest, AWrongKeyEndsTheFetchAndIsFetchedAgain)
{
    NubisTest::LogCapture log;
    Json::Value forged = Key(3, "01");
    forged["key"] = "02";
    service_->Answer("getServiceKey", Keys({Key(1, "07"), forged, Key(3, "03")}));
    const auto partly = [this]() {
        database_->GetServiceKey();
        return database_->GetUserKey("");
    };
    auto keys = partly();
    EXPECT_EQ(keys->efek[0], 7);
    EXPECT_EQ(keys->sfek[0], 0);
    EXPECT_EQ(keys->userId, "");
    EXPECT_THAT(log.TakeErrors(),
        testing::Each(StartsWith("parse service key failed, check user key sha256 error, cal sha256:")));
    EXPECT_EQ(Asked("getServiceKey"), 3U);

    service_->Answer("getServiceKey", Keys({Key(1, "07", std::string(31, 'u'))}));
    EXPECT_EQ(partly()->efek[0], 0);
    EXPECT_THAT(log.TakeErrors(),
        Contains("parse service key failed, userKeyUuid length is error, uuid:" + std::string(31, 'u')));
    service_->Answer("getServiceKey", Keys({Key(1, "09")}));
    EXPECT_EQ(database_->GetUserKey("")->efek[0], 9);

    // Also when the reply with the wrong key did not come by a fetch.
    Json::Value reply;
    reply["keys"].append(forged);
    database_->ParseServiceKey(reply);
    EXPECT_EQ(database_->GetUserKey("")->efek[0], 9);
}

TEST_F(ServiceKeyTest, AnotherUserOrAFailureAsksAgain)
{
    service_->Answer("getServiceKey", Keys({Key(1, "07")}));
    database_->GetServiceKey();
    EXPECT_EQ(Asked("getServiceKey"), 2U);
    database_->GetUserKey(std::to_string(userId_));
    EXPECT_EQ(Asked("getServiceKey"), 2U);
    database_->GetUserKey("999");
    EXPECT_EQ(Asked("getServiceKey"), 3U);

    NubisTest::LogCapture log;
    service_->Answer("getServiceKey", R"({"code": 1})");
    database_->CleanUserInfo();
    // A failed fetch leaves what there is.
    EXPECT_EQ(database_->GetUserKey("")->efek[0], 7);
    EXPECT_THAT(log.TakeErrors(), Contains("get service key failed"));
    database_->ParseServiceKey(Json::Value("nothing"));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("parse service key failed, no keys node"));
    EXPECT_EQ(container_->GetSharedDatabase()->GetUserKey("1")->userId, "");
}
} // namespace
