// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <string>

#include <gtest/gtest.h>
#include <json/json.h>

#include "json_samples.h"
#include "nb_container.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
class AssetUploadTest : public NotesTest {
protected:
    void TearDown() override
    {
        Kit()->SetUploadAssetCallBack("", nullptr);
    }

    // The first asset of the note.
    Json::Value AssetOf(const std::string &recordId) const
    {
        Json::Value request(Json::objectValue);
        request["function"] = "fetchAssetStatusWithId";
        request["bundleName"] = TEST_BUNDLE;
        request["containerName"] = Container()->GetContainerName();
        request["recordType"] = "note";
        request["recordId"] = recordId;
        Json::Value reply;
        EXPECT_FALSE(Kit()->SendDataToCloudSrv(request, reply, 60).HasError());
        return reply["assets"][0];
    }
};

TEST_F(AssetUploadTest, TheAppIsAskedForTheAssetsOfASaveAndSaysWhatItHasUploaded)
{
    std::atomic<int> calls{0};
    Kit()->SetUploadAssetCallBack("integration_test", [&](const std::string &text, std::string &reply) {
        ++calls;
        const Json::Value request = ParseJson(text);
        const Json::Value &record = request["records"][0];
        // The app may ask the service while the service waits for it.
        EXPECT_EQ(AssetOf(record["recordId"].asString())["status"], "pending");
        Json::Value answer(Json::objectValue);
        answer["code"] = 0;
        answer["records"][0]["recordId"] = record["recordId"];
        answer["records"][0]["assets"] = record["assets"];
        reply = JsonText(answer);
        return 0;
    });
    NBAsset photo;
    photo.assetName = "p.jpg";
    photo.sha256 = "5e";
    photo.size = 3;

    ASSERT_TRUE(AllSaved(Save(Database(), {Note("n").Id("n1").With("photo", NBRecordField(photo))})));

    EXPECT_EQ(AssetOf("n1")["status"], "uploaded");
    EXPECT_EQ(FetchById(Database(), "note", "n1").record.GetVersion(), 1U);
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("plain").Id("n2")})));
    EXPECT_EQ(calls.load(), 1);

    Kit()->SetUploadAssetCallBack("integration_test", [](const std::string &, std::string &) { return -1; });
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("n").Id("n3").With("photo", NBRecordField(photo))})));
    EXPECT_EQ(AssetOf("n3")["status"], "pending");
}
} // namespace
