// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::BUNDLE;
using testing::ElementsAre;

class KitUploadTest : public NubisTest::KitTest {
protected:
    int32_t Ask(const std::string &containerName, std::string &reply)
    {
        Json::Value request;
        request["bundleName"] = BUNDLE;
        request["containerName"] = containerName;
        return kit_->OnUploadAsset(NubisTest::JsonText(request), reply);
    }
};

TEST_F(KitUploadTest, RequestsGoToThePrivateDatabaseOfTheDataKind)
{
    const auto database = kit_->GetContainer(BUNDLE, "main")->GetPrivateDatabase();
    const auto fileDatabase = kit_->GetFileContainer(BUNDLE, "main")->GetPrivateDatabase();
    database->StopUploadTask();
    fileDatabase->StopUploadTask();
    std::string reply = "before";
    EXPECT_EQ(Ask("main", reply), 0);
    EXPECT_EQ(reply, "null");
    EXPECT_FALSE(database->ResetStopUploadFlag());
    EXPECT_TRUE(fileDatabase->ResetStopUploadFlag());
}

TEST_F(KitUploadTest, RequestsWithoutATargetFail)
{
    NubisTest::LogCapture log;
    std::string reply = "before";
    EXPECT_EQ(kit_->OnUploadAsset("[1]", reply), -1);
    EXPECT_EQ(Ask("", reply), -1);
    EXPECT_EQ(Asked("GetCloudAppInfo"), 0U);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("OnUploadAsset failed, request is not object, request:[1]",
                                      "OnUploadAsset failed, bundlename or containername is null, "
                                      "bundleName:com.example.notes, containerName:"));
    EXPECT_EQ(Ask("unknown", reply), -1);
    EXPECT_EQ(log.TakeErrors().back(),
        "OnUploadAsset failed, Get container failed, bundleName:com.example.notes, containerName:unknown");
    log.Take(LOG_INFO);
    kit_->GetContainer(BUNDLE, "main")->GetPrivateDatabase()->OnUploadRecordAssets("text", reply);
    EXPECT_THAT(log.Take(LOG_INFO), testing::Contains("OnUploadRecordAssets fail, recordAssets is not object"));
    EXPECT_EQ(reply, "before");
}
} // namespace
