// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::BUNDLE;
using NubisTest::ParseJson;
using testing::Contains;

class KitRegistryTest : public NubisTest::KitTest {
protected:
    void Demand(NBCloudSyncDemon demon)
    {
        NubisNative::GetInstance(userId_, demon);
    }
};

TEST_F(KitRegistryTest, OneInstanceForEachUser)
{
    EXPECT_EQ(NubisNative::GetInstance(userId_), kit_);
    EXPECT_EQ(kit_->GetUserId(), userId_);
    EXPECT_EQ(kit_->CheckNetConnection(), 8);
    const std::map<NBCloudSyncDemon, std::string> names = {{NB_SYNC_DEMON_DATA, "cloudData_notifyDataChange"},
        {NB_SYNC_DEMON_FILE, "cloudFile_notifyDataChange"}, {NB_SYNC_DEMON_ASSET, "cloudAsset_notifyDataChange"},
        {NB_SYNC_DEMON_NONE, ""}};
    for (const auto &[demon, name] : names) {
        EXPECT_EQ(NubisNative::GetInstance(userId_, demon), kit_);
        EXPECT_EQ(kit_->GetCloudSyncDemon(), demon);
        EXPECT_EQ(kit_->GetCloudSyncSaName(), name);
    }
    const auto fresh = NubisNative::GetInstance(NextUser());
    EXPECT_NE(fresh, kit_);
    EXPECT_EQ(fresh->GetCloudSyncDemon(), NB_SYNC_DEMON_NONE);
}

TEST_F(KitRegistryTest, TheFileKindIsForTheFileDemonOnly)
{
    NubisTest::LogCapture log;
    Demand(NB_SYNC_DEMON_ASSET);
    EXPECT_EQ(kit_->GetDefaultFileContainer(BUNDLE), nullptr);
    EXPECT_EQ(kit_->GetFileContainer(BUNDLE, "main"), nullptr);
    EXPECT_THAT(log.TakeErrors(), Contains("param error, syncDemon:2").Times(2));
    EXPECT_EQ(Asked("GetCloudAppInfo"), 0U);
    EXPECT_NE(kit_->GetDefaultContainer(BUNDLE), nullptr);
    EXPECT_EQ(LastRequest("GetCloudAppInfo")["syncDemon"], "0");
    EXPECT_EQ(LastRequest("GetCloudAppInfo")["bundleName"], ParseJson(R"(["com.example.notes"])"));
    Demand(NB_SYNC_DEMON_FILE);
    EXPECT_NE(kit_->GetDefaultFileContainer(BUNDLE), kit_->GetDefaultContainer(BUNDLE));
    EXPECT_EQ(LastRequest("GetCloudAppInfo")["syncDemon"], "1");
}

TEST_F(KitRegistryTest, AContainerIsTheSameUntilItIsReleased)
{
    const auto container = kit_->GetDefaultContainer(BUNDLE);
    ASSERT_NE(container, nullptr);
    EXPECT_EQ(container->GetContainerName(), "main");
    EXPECT_EQ(kit_->GetContainer(BUNDLE, "main"), container);
    EXPECT_NE(kit_->GetContainer(BUNDLE, "team"), container);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 1U);

    // Releasing an unknown container of the bundle still drops the catalogue entry.
    kit_->ReleaseContainer(BUNDLE, "unknown");
    EXPECT_EQ(kit_->GetContainer(BUNDLE, "main"), container);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 2U);
    kit_->ReleaseFileContainer(BUNDLE, "main");
    EXPECT_EQ(kit_->GetDefaultContainer(BUNDLE), container);

    const auto database = container->GetPrivateDatabase();
    EXPECT_FALSE(database->ResetStopUploadFlag());
    kit_->ReleaseDefaultContainer(BUNDLE);
    EXPECT_TRUE(database->ResetStopUploadFlag());
    EXPECT_TRUE(container->GetSharedDatabase()->ResetStopUploadFlag());
    EXPECT_FALSE(container->GetDatabaseWithdatabaseScope(NB_DATABASE_PUBLIC)->ResetStopUploadFlag());
    EXPECT_NE(kit_->GetDefaultContainer(BUNDLE), container);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 3U);
    // Without a catalogue entry the default container has no name to be found by.
    kit_->ReleaseContainer(BUNDLE, "unknown");
    const auto kept = kit_->GetDefaultContainer(BUNDLE);
    kit_->ReleaseContainer(BUNDLE, "unknown");
    kit_->ReleaseDefaultContainer(BUNDLE);
    EXPECT_EQ(kit_->GetDefaultContainer(BUNDLE), kept);
}

TEST_F(KitRegistryTest, OnlyDeclaredContainersExist)
{
    NubisTest::LogCapture log;
    EXPECT_EQ(kit_->GetContainer(BUNDLE, "Main"), nullptr);
    EXPECT_EQ(kit_->GetContainer(BUNDLE, ""), nullptr);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 1U);
    EXPECT_THAT(log.TakeErrors(), Contains("Get container failed, check container name failed, "
                                           "bundleName:com.example.notes, containerName:Main, type:0"));
    EXPECT_EQ(kit_->GetContainer("com.example.other", "main"), nullptr);
    EXPECT_EQ(kit_->GetDefaultContainer("com.example.other"), nullptr);
    service_->Answer("GetCloudAppInfo", R"({"code": 4, "error": {}})");
    log.TakeErrors();
    EXPECT_EQ(kit_->GetContainer("com.example.other", "main"), nullptr);
    EXPECT_THAT(log.TakeErrors(), Contains("Check container name failed, Get CloudAppinfo failed, "
                                           "bundlename:com.example.other, syncType:0"));
    EXPECT_EQ(kit_->GetDefaultContainer("com.example.other"), nullptr);
}

TEST_F(KitRegistryTest, ThreadsThatAskAtOnceGetOneContainer)
{
    std::vector<std::future<std::shared_ptr<NBContainer>>> asked;
    for (int i = 0; i < 8; ++i) {
        asked.push_back(std::async(std::launch::async, [this]() { return kit_->GetContainer(BUNDLE, "team"); }));
    }
    const auto container = kit_->GetContainer(BUNDLE, "team");
    ASSERT_NE(container, nullptr);
    for (auto &other : asked) {
        EXPECT_EQ(other.get(), container);
    }
}

TEST_F(KitRegistryTest, CleaningKeepsContainersAndReleasingDropsThem)
{
    NubisTest::LogCapture log;
    const auto container = kit_->GetDefaultContainer(BUNDLE);
    const auto files = kit_->GetDefaultFileContainer(BUNDLE);
    kit_->CleanCloudUserInfo();
    EXPECT_TRUE(container->GetPrivateDatabase()->ResetStopUploadFlag());
    EXPECT_TRUE(files->GetPrivateDatabase()->ResetStopUploadFlag());
    EXPECT_EQ(kit_->GetDefaultContainer(BUNDLE), container);
    EXPECT_EQ(kit_->GetDefaultFileContainer(BUNDLE), files);
    const auto infos = log.Take(LOG_INFO);
    EXPECT_THAT(infos, Contains("clean bundlename:com.example.notesmain user info"));
    EXPECT_THAT(infos, Contains("clean file bundlename:com.example.notesmain user info"));
    EXPECT_EQ(Asked("GetCloudAppInfo"), 2U);

    kit_->ReleaseCloudUserInfo();
    EXPECT_TRUE(container->GetPrivateDatabase()->ResetStopUploadFlag());
    EXPECT_NE(kit_->GetDefaultContainer(BUNDLE), container);
    EXPECT_NE(kit_->GetDefaultFileContainer(BUNDLE), files);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 4U);
}

TEST_F(KitRegistryTest, UserInfoTakesDefaultsForWhatIsMissing)
{
    service_->Answer("GetCloudUserInfo", R"({"userInfo": {"userId": "ann", "cloudStatus": 4, "totalSpace": 100,
        "remainSpace": 18446744073709551615, "pushKeyId": "k", "pushKeyValue": "v"}})");
    NBUserInfo user;
    EXPECT_FALSE(kit_->GetCloudUserInfo(user, true).HasError());
    EXPECT_EQ(user.userId, "ann");
    EXPECT_EQ(user.cloudStatus, 4);
    EXPECT_EQ(user.remainSpace, UINT64_MAX);
    EXPECT_FALSE(user.isSpaceFull);
    EXPECT_EQ(kit_->GetPushKeyId(), "k");
    const Json::Value request = LastRequest("GetCloudUserInfo");
    EXPECT_EQ(request["signVersion"], 2);
    EXPECT_EQ(request["needSpaceInfo"], true);

    for (const char *reply : {"{}", R"({"userInfo": []})"}) {
        EXPECT_FALSE(kit_->GetUserInfoFromJson(ParseJson(reply), user).HasError());
        EXPECT_EQ(user.userId, "ann");
    }
    const char *odd = R"({"userInfo": {"userId": 1, "cloudStatus": 7, "totalSpace": -1}})";
    EXPECT_FALSE(kit_->GetUserInfoFromJson(ParseJson(odd), user).HasError());
    EXPECT_EQ(user.userId, "");
    EXPECT_EQ(user.cloudStatus, 0);
    EXPECT_EQ(user.totalSpace, 0U);
    EXPECT_TRUE(user.isSpaceFull);
    EXPECT_EQ(kit_->GetPushKeyId(), "");
}

TEST_F(KitRegistryTest, UserInfoErrorsAreReturned)
{
    NBUserInfo user;
    EXPECT_EQ(kit_->GetUserInfoFromJson(Json::Value(Json::arrayValue), user).GetLocalErrorCode(), 3);
    EXPECT_EQ(kit_->GetUserInfoFromJson(ParseJson(R"({"error": {"code": 9}})"), user).GetServerErrorCode(), 9);
    EXPECT_TRUE(kit_->GetUserInfoFromJson(ParseJson(R"({"error": null})"), user).IsServerError());
    service_->Answer("GetCloudUserInfo", "[]");
    EXPECT_EQ(kit_->GetCloudUserInfo(user, false).GetLocalErrorCode(), 3);
    service_->Answer("GetCloudUserInfo", R"({"code": 6})");
    EXPECT_EQ(kit_->GetCloudUserInfo(user, false).GetLocalErrorCode(), 24);
}

TEST_F(KitRegistryTest, AContainerWithoutAKitHasNoDatabases)
{
    const auto container = std::make_shared<NBContainer>("b", "c", nullptr, 0);
    container->Init();
    container->Release();
    for (int scope = -1; scope < 4; ++scope) {
        EXPECT_EQ(container->GetDatabaseWithdatabaseScope(static_cast<NBDatabaseScope>(scope)), nullptr);
    }
    Json::Value request(Json::objectValue);
    container->AddTraceId(nullptr, request);
    container->AddTraceId(NubisTest::ContextOf("", ""), request);
    EXPECT_TRUE(request.empty());
    container->AddTraceId(NubisTest::ContextOf("t", ""), request);
    EXPECT_EQ(request, ParseJson(R"({"traceId": "t"})"));
    container->AddTraceId(NubisTest::ContextOf("", "p"), request);
    EXPECT_EQ(request["prepareTraceId"], "p");
}
} // namespace
