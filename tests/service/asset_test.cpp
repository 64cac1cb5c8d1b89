// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <functional>
#include <utility>

#include "callback_object.h"
#include "requests/client_callback.h"
#include "service_fixture.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

class AssetTest : public ServiceTest {
protected:
    Json::Value Assets(const std::string &id, const std::string &type = "person")
    {
        Json::Value reply = Ask("fetchAssetStatusWithId", Members({{"recordId", id}, {"recordType", type}}));
        EXPECT_THAT(reply, Succeeds());
        return reply["assets"];
    }

    // "pending 1": status and revision of the person's one asset.
    std::string State(const std::string &id)
    {
        Json::Value assets = Assets(id);
        return assets.size() != 1 ? std::to_string(assets.size()) + " assets"
                                  : assets[0]["status"].asString() + " " + assets[0]["revision"].asString();
    }

    Json::Value Confirm(const std::string &id, const std::string &asset)
    {
        return Ask(
            "updateAssetRevision", Members({{"recordId", id}, {"recordType", "person"}, {"assets", List({J(asset)})}}));
    }
};

TEST_F(AssetTest, AnAssetIsPendingAgainWheneverItsContentIsReplaced)
{
    Json::Value saved = SaveOne(NewPerson("p", "{'name': 'Ann', 'avatar': {'assetName': 'a.png', 'size': 3}}"));
    Json::Value asset = saved["record"]["avatar"];
    Json::Value status = J("{'field': 'avatar', 'assetName': 'a.png', 'status': 'pending', 'revision': 1, 'size': 3,"
                           " 'sha256': ''}");
    status["assetId"] = asset["assetId"];
    EXPECT_NE(asset["assetId"].asString(), "");
    EXPECT_EQ(Assets("p")[0], status);

    SaveOne(Changed("p", 0, "{'age': 5}"), 1);
    asset["uri"] = "file://elsewhere";
    Json::Value change = Changed("p", 0, "{}");
    change["avatar"] = asset;
    SaveOne(change, 1);
    EXPECT_EQ(State("p"), "pending 1") << "neither other fields nor other members are another content";
    change["avatar"]["sha256"] = "5e";
    SaveOne(change, 1);
    EXPECT_EQ(State("p"), "pending 2");
    change["avatar"].removeMember("assetId");
    EXPECT_NE(SaveOne(change, 1)["record"]["avatar"]["assetId"], asset["assetId"]);
    EXPECT_EQ(State("p"), "pending 1") << "without an id it is another asset";
    SaveOne(Changed("p", 0, "{'avatar': null}"), 1);
    EXPECT_EQ(State("p"), "0 assets");
}

TEST_F(AssetTest, AConfirmedContentIsAChangeOfTheRecord)
{
    SaveOne(NewPerson("p", "{'name': 'Ann', 'age': 4, 'avatar': {'assetId': 'a', 'version': 1}}"));
    EXPECT_THAT(Confirm("p", "{'field': 'avatar', 'assetId': 'a', 'revision': 2, 'sha256': '5e', 'size': 9}"),
        FailsWith(ErrorCode::VERSION_CONFLICT, "has revision 1", "assets[0]"));
    EXPECT_THAT(Confirm("p", "{'field': 'avatar', 'assetId': 'b', 'sha256': '5e', 'size': 9}"),
        FailsWith(ErrorCode::ASSET_NOT_FOUND, "no asset \"b\"", "assets[0]"));
    for (const char *wrong : {"{}", "[1]", "{'field': 'avatar', 'assetId': 'a', 'sha256': '5e', 'size': -1}"}) {
        EXPECT_THAT(Confirm("p", wrong), FailsWith(ErrorCode::INVALID_ARGUMENT, "", "assets[0]"));
    }
    EXPECT_THAT(Confirm("p", "{'field': 'avatar', 'assetId': 'a', 'sha256': '5e', 'size': 9, 'version': 'x'}"),
        FailsWith(ErrorCode::INVALID_FIELD, "integer that is not negative", "avatar.version"));
    Json::Value many = List(std::vector<Json::Value>(1001));
    Json::Value tooMany = Members({{"recordId", "p"}, {"recordType", "person"}, {"assets", many}});
    EXPECT_THAT(Ask("updateAssetRevision", tooMany), FailsWith(ErrorCode::BATCH_TOO_LARGE, "at most 1000", "assets"));
    EXPECT_EQ(State("p"), "pending 1");
    EXPECT_EQ(Fetch("p")["version"], 1);

    Json::Value cursor = Ask("getStartCursor");
    nowMs_ = 2000;
    Json::Value reply =
        Confirm("p", "{'field': 'avatar', 'assetId': 'a', 'revision': 1, 'sha256': '5e', 'size': 9, 'version': 2}");
    ASSERT_THAT(reply, Succeeds());
    EXPECT_EQ(reply["version"], 2);
    EXPECT_EQ(reply["assets"], Assets("p"));
    EXPECT_EQ(State("p"), "uploaded 2");
    Json::Value change = Ask("fetchDatabaseChanges", Members({{"cursor", cursor["startCursor"]}}))["changes"][0];
    EXPECT_EQ(change["record"]["avatar"], J("{'assetId': 'a', 'sha256': '5e', 'size': 9, 'version': 2}"));
    EXPECT_EQ(change["record"]["age"], 4);
    EXPECT_EQ(change["editedTime"], 2000);
    EXPECT_THAT(Find("age=4"), testing::ElementsAre("p"));

    // The same content under the same id is there already, for whatever record; another one is not.
    SaveOne(NewPerson("copy", "{'name': 'B', 'avatar': {'assetId': 'a', 'sha256': '5e', 'size': 9, 'version': 2}}"));
    EXPECT_EQ(State("copy"), "uploaded 1");
    SaveOne(NewPerson("other", "{'name': 'C', 'avatar': {'assetId': 'a', 'sha256': '5f', 'size': 9, 'version': 2}}"));
    EXPECT_EQ(State("other"), "pending 1");
}

TEST_F(AssetTest, AssetsAreAddedToRecordsEachOrNotEach)
{
    SaveOne(NewPerson("p"));
    SaveOne(J("{'recordId': 'm', 'recordType': 'media', 'isNew': true, 'attachments': [{'assetId': 'old'}]}"));
    Json::Value members = J(R"({'records': [
        {'recordId': 'm', 'recordType': 'media', 'assets': [{'field': 'attachments', 'asset': {'assetName': 'a'}},
            {'field': 'attachments', 'asset': {'assetName': 'b'}}]},
        {'recordId': 'm', 'recordType': 'media', 'assets': [{'field': 'attachments', 'asset': {'assetName': 'c'}}]},
        {'recordId': 'p', 'recordType': 'person', 'assets': [{'field': 'name', 'asset': {}}]},
        {'recordId': 'p', 'recordType': 'person', 'assets': [{'field': 'avatar', 'asset': {'assetId': 'x'}}]},
        {'recordId': 'p', 'recordType': 'person', 'assets': [{'field': 'avatar', 'asset': {'size': 'x'}}]},
        {'recordId': 'p', 'recordType': 'person', 'assets': [{'field': 'avatar', 'asset': {}},
            {'field': 'avatar', 'asset': {}}]},
        {'recordId': 'p', 'recordType': 'person', 'assets': [7]}, 7,
        {'recordId': 'q', 'recordType': 'person', 'assets': []},
        {'recordId': 'q', 'recordType': 'none', 'assets': []}]})");
    Json::Value reply = Ask("batchCreateAsset", members);
    ASSERT_THAT(reply, Succeeds());
    const Json::Value &records = reply["records"];
    EXPECT_EQ(records[1]["version"], 3);
    const Json::Value &created = records[0]["assets"];
    ASSERT_EQ(created.size(), 2u);
    EXPECT_EQ(records[0]["record"]["attachments"][2]["assetId"], created[1]["assetId"]);
    Json::Value all = Assets("m", "media");
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0]["assetId"], "old");
    EXPECT_EQ(all[1], created[0]);
    EXPECT_EQ(all[3], records[1]["assets"][0]);
    EXPECT_THAT(records[2], FailsWith(ErrorCode::INVALID_FIELD, "no field \"name\" that holds assets", "assets[0]"));
    EXPECT_THAT(records[3], FailsWith(ErrorCode::INVALID_FIELD, "no assetId", "assets[0]"));
    EXPECT_THAT(records[4], FailsWith(ErrorCode::INVALID_FIELD, "came text", "avatar.size"));
    EXPECT_THAT(records[5], FailsWith(ErrorCode::INVALID_RECORD, "one asset only", "assets[1]"));
    EXPECT_THAT(records[6], FailsWith(ErrorCode::INVALID_RECORD, "came integer 7", "assets[0]"));
    EXPECT_THAT(records[7], FailsWith(ErrorCode::INVALID_RECORD, "came integer 7", "records"));
    EXPECT_THAT(records[8], FailsWith(ErrorCode::RECORD_NOT_FOUND, "\"q\"", "recordId"));
    EXPECT_THAT(records[9], FailsWith(ErrorCode::UNKNOWN_RECORD_TYPE, "\"none\"", "recordType"));
    EXPECT_EQ(Fetch("p")["version"], 1);

    members = J("{'savePolicy': 0, 'records': [{'recordId': 'p', 'recordType': 'person', 'baseVersion': 4, 'assets': "
                "[{'field': 'avatar', 'asset': {}}]}]}");
    EXPECT_THAT(Ask("batchCreateAsset", members)["records"][0],
        FailsWith(ErrorCode::VERSION_CONFLICT, "has version 1", "baseVersion"));
    members["savePolicy"] = 2;
    EXPECT_THAT(
        Ask("batchCreateAsset", members), FailsWith(ErrorCode::INVALID_ARGUMENT, "expected 0 or 1", "savePolicy"));
}

class UploadTest : public AssetTest {
protected:
    // The reply to the save of this record by a client that is there for calls; they are kept in calls_.
    Json::Value SaveAndUpload(const Json::Value &record, const std::function<std::string(const Json::Value &)> &answer)
    {
        Json::Value request = J("{'function': 'saveRecords', 'bundleName': 'com.example.people', 'containerName': "
                                "'people', 'savePolicy': 1, 'taskId': 't1'}");
        request["records"].append(record);
        request["records"].append(J("{'recordId': 'none', 'recordType': 'person'}"));
        ClientCallback callback(new CallbackObject([this, answer](const Json::Value &call) {
            calls_.append(call);
            return answer(call);
        }));
        Json::Value reply;
        std::string error;
        EXPECT_TRUE(ParseJson(service_->Router().Answer(WriteJson(request), "tablet", &callback), reply, error));
        EXPECT_THAT(reply["records"][0], Succeeds());
        return reply;
    }

    static Json::Value Pictured(const std::string &id, const std::string &avatar)
    {
        Json::Value record = NewPerson(id);
        record["avatar"] = J(avatar);
        return record;
    }

    Json::Value calls_ = Json::Value(Json::arrayValue);
};

TEST_F(UploadTest, TheClientIsAskedForWhatIsPendingAndConfirmsItByItsAnswer)
{
    const char *avatar = "{'assetId': 'a', 'uri': 'file://a', 'sha256': '5e', 'size': 9}";
    auto answer = [](const char *digest) {
        return WriteJson(J(std::string("{'code': 0, 'records': [7, {'recordId': 'p', 'assets': [7, {'field': 'avatar', "
                                       "'assetId': 'a', 'sha256': '") +
                           digest + "', 'size': 9}]}]}"));
    };
    SaveAndUpload(Pictured("p", avatar), [&](const Json::Value &) { return answer("5f"); });
    Json::Value expected = J(R"({'function': 'onUploadRecordAssets', 'bundleName': 'com.example.people',
        'containerName': 'people', 'databaseType': 1, 'taskId': 't1', 'records': [{'recordId': 'p',
        'recordType': 'person', 'version': 1, 'assets': [{'field': 'avatar', 'assetId': 'a', 'assetName': '',
        'status': 'pending', 'revision': 1, 'size': 9, 'sha256': '5e', 'uri': 'file://a', 'subPath': ''}]}]})");
    expected["userId"] = Ask("GetCloudUserInfo")["userInfo"]["userId"];
    ASSERT_EQ(calls_.size(), 1u);
    EXPECT_EQ(calls_[0], expected);
    EXPECT_EQ(State("p"), "pending 1") << "another content than the one asked for";

    SaveAndUpload(Pictured("p", avatar), [&](const Json::Value &) { return answer("5e"); });
    EXPECT_EQ(State("p"), "uploaded 1");
    EXPECT_EQ(Fetch("p")["version"], 2) << "the record stays as it was saved";
    SaveAndUpload(Pictured("p", avatar), [&](const Json::Value &) { return answer("5e"); });
    EXPECT_EQ(calls_.size(), 2u) << "nothing is pending";
}

TEST_F(UploadTest, TheSaveStandsWhateverTheClientAnswers)
{
    for (const char *text : {"refuse", "", "no JSON", "[]", R"({"code":3,"records":[{}]})", R"({"code":0,"records":7})",
             R"({"code":0,"records":[{"recordId":"p","assets":7}]})"}) {
        Json::Value reply =
            SaveAndUpload(Pictured("p", "{'assetId': 'a'}"), [text](const Json::Value &) { return text; });
        EXPECT_EQ(reply["records"][0]["version"].asUInt(), calls_.size());
        EXPECT_EQ(Fetch("p")["version"].asUInt(), calls_.size());
    }
    EXPECT_EQ(calls_.size(), 7u);
    EXPECT_EQ(State("p"), "pending 1");

    EXPECT_THAT(Ask("setSetting", J("{'name': 'uploadCallback', 'value': 0}")), Succeeds());
    SaveAndUpload(Pictured("p", "{}"), [](const Json::Value &) { return ""; });
    EXPECT_EQ(calls_.size(), 7u) << "switched off";
}

TEST_F(UploadTest, TheClientMaySendRequestsWhileItIsAsked)
{
    Json::Value reply = SaveAndUpload(Pictured("p", "{'assetId': 'a', 'sha256': '5e'}"), [this](const Json::Value &) {
        EXPECT_THAT(
            Confirm("p", "{'field': 'avatar', 'assetId': 'a', 'revision': 1, 'sha256': '5f', 'size': 1}"), Succeeds());
        SaveOne(Changed("p", 2, "{'avatar': {'assetId': 'a', 'sha256': '60'}}"));
        return WriteJson(J("{'code': 0, 'records': [{'recordId': 'p', 'assets': [{'field': 'avatar', 'assetId': 'a', "
                           "'sha256': '5e', 'size': 0}]}]}"));
    });
    EXPECT_EQ(reply["records"][0]["version"], 1);
    EXPECT_EQ(State("p"), "pending 3") << "the answer is about a content that has been replaced since";
}

} // namespace

} // namespace DriveService
