// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::ContextOf;
using NubisTest::ParseJson;
using NubisTest::PreShare;
using testing::Contains;
using testing::IsEmpty;

class DatabaseLockTest : public NubisTest::DatabaseTest {};

TEST_F(DatabaseLockTest, TheSessionTravelsWithEveryRequestForRecords)
{
    service_->Answer("getLock", R"({"lockSessionId": "s1", "lockInterval": 60})");
    NBLock lock;
    EXPECT_FALSE(database_->GetLock(ContextOf("t", "p"), lock).HasError());
    EXPECT_EQ(OwnMembers("getLock"),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "prepareTraceId": "p"})"));
    EXPECT_EQ(lock.lockSessionId, "s1");
    EXPECT_EQ(lock.lockInterval, 60);
    NubisTest::Save(database_, {});
    NubisTest::Modify(database_, {}, {}, false);
    NubisTest::Copy(database_, {});
    NubisTest::Changes(database_);
    for (const char *function : {"saveRecords", "modifyRecords", "copyRecords", "fetchDatabaseChanges"}) {
        EXPECT_EQ(LastRequest(function)["lockSessionId"], "s1") << function;
    }

    service_->Answer("getLock", R"({"lockSessionId": "s2", "lockInterval": "60"})");
    EXPECT_FALSE(database_->GetLock(lock).HasError());
    EXPECT_EQ(LastRequest("getLock")["lockSessionId"], "s1");
    EXPECT_FALSE(LastRequest("getLock").isMember("prepareTraceId"));
    EXPECT_EQ(lock.lockInterval, 0);
    EXPECT_EQ(database_->GetLockSessionId(), "s2");

    service_->Answer("getLock", R"({"code": 5, "error": {}})");
    lock.lockInterval = 7;
    EXPECT_EQ(database_->GetLock(lock).GetServerErrorCode(), 5);
    EXPECT_EQ(lock.lockInterval, 7);
    EXPECT_EQ(database_->GetLockSessionId(), "s2");
}

TEST_F(DatabaseLockTest, DeletingForgetsTheSessionThatIsGone)
{
    service_->Answer("getLock", R"({"lockSessionId": "s1"})");
    NBLock lock;
    database_->GetLock(lock);
    NubisTest::LogCapture log;
    EXPECT_FALSE(database_->DeleteLock(NBLock{0, "other"}).HasError());
    EXPECT_EQ(OwnMembers("deleteLock"),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main", "lockSessionId": "other"})"));
    EXPECT_EQ(database_->GetLockSessionId(), "s1");
    EXPECT_THAT(
        log.TakeErrors(), Contains("delete lock session id is not equal, lock sessionId:other, local sessionId:s1"));
    EXPECT_FALSE(database_->DeleteLock(ContextOf("t", "p"), lock).HasError());
    EXPECT_EQ(LastRequest("deleteLock")["prepareTraceId"], "p");
    EXPECT_EQ(database_->GetLockSessionId(), "");

    database_->GetLock(lock);
    service_->Answer("deleteLock", R"({"code": 5, "error": {}})");
    EXPECT_EQ(database_->DeleteLock(NBLock{0, "other"}).GetServerErrorCode(), 5);
    EXPECT_EQ(database_->GetLockSessionId(), "");
    EXPECT_THAT(log.TakeErrors(), Contains("delete lock failed, send data to cloud srv failed"));
}

TEST_F(DatabaseLockTest, APreSharedRecordIsReadFromTheReply)
{
    service_->Answer("setPreShared", R"({"code": 0, "recordId": "n1", "recordType": "note", "isShared": true})");
    const auto shared = PreShare(database_, "note", "n1");
    EXPECT_FALSE(shared.error.HasError());
    EXPECT_TRUE(shared.record.GetShared());
    EXPECT_EQ(OwnMembers("setPreShared", {"prepareTraceId"}),
        ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main",
        "recordType": "note", "recordId": "n1"})"));

    service_->Answer("setPreShared", R"({"code": 5, "error": {"description": "no"}})");
    const auto failed = PreShare(database_, "note", "n1");
    EXPECT_EQ(failed.error.GetErrorMsg(), "no");
    EXPECT_EQ(failed.record.GetRecordId(), "n1");
    EXPECT_EQ(database_->SetPreShared(nullptr, "note", "n1", nullptr), 0);
    service_->WaitFor("setPreShared", 3);
}

TEST_F(DatabaseLockTest, KeysAndTokensAreAskedFor)
{
    service_->Answer("getCommonKey", R"({"key": "k1"})");
    EXPECT_EQ(database_->GetCommonKey(2, 3), "k1");
    EXPECT_EQ(OwnMembers("getCommonKey"), ParseJson(R"({"dataType": 2, "keyType": 3})"));
    service_->Answer("getAccessToken", R"({"accessToken": "t1"})");
    EXPECT_EQ(database_->GetAT(), "t1");
    EXPECT_EQ(
        OwnMembers("getAccessToken"), ParseJson(R"({"bundleName": "com.example.notes", "containerName": "main"})"));

    NubisTest::LogCapture log;
    service_->Answer("getCommonKey", R"({"key": 5})");
    service_->Answer("getAccessToken", "{}");
    EXPECT_EQ(database_->GetCommonKey(0, 0) + database_->GetAT(), "");
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
    for (const char *function : {"getCommonKey", "getAccessToken"}) {
        service_->Answer(function, R"({"code": 5, "error": {}, "key": "k", "accessToken": "t"})");
    }
    EXPECT_EQ(database_->GetCommonKey(0, -4) + database_->GetAT(), "");
    EXPECT_THAT(log.TakeErrors(),
        testing::IsSupersetOf({"Get common key failed, get service key failed, keyType:-4", "Get AT failed"}));
}
} // namespace
