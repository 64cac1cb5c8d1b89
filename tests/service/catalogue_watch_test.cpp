// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>

#include "log_capture.h"
#include "service_fixture.h"

namespace DriveService {

namespace {

class CatalogueWatchTest : public ServiceTest {
protected:
    Json::Value AppInfo(const std::string &demon = "0")
    {
        Json::Value members = J("{'bundleName': ['com.example.people', 'com.example.none', '../../etc/passwd', '']}");
        members["syncDemon"] = demon;
        Json::Value reply = Ask("GetCloudAppInfo", members);
        EXPECT_THAT(reply, Succeeds());
        EXPECT_LE(reply["appInfo"].size(), 1u);
        return reply["appInfo"].get(0u, Json::Value());
    }

    // {group version, schema version of the default container} as served.
    std::pair<int, int> Versions()
    {
        Json::Value info = AppInfo();
        return {info["schemaGroupVersion"].asInt(), info["defaultContainer"]["schema"]["version"].asInt()};
    }
};

using Pair = std::pair<int, int>;

TEST_F(CatalogueWatchTest, AnEntryIsServedAsItStandsInTheFile)
{
    Json::Value expected = PeopleEntry();
    expected.removeMember("configParams");
    EXPECT_EQ(AppInfo(), expected);
    Json::Value entry = PeopleEntry();
    entry["demons"] = J("['1']");
    entry["defaultContainer"]["recordIdRule"] = J("{'ruleId': 1}");
    Install(entry);
    EXPECT_TRUE(AppInfo("0").isNull());
    Json::Value served = AppInfo("1");
    EXPECT_FALSE(served.isMember("demons"));
    EXPECT_FALSE(served["defaultContainer"].isMember("recordIdRule"));
}

TEST_F(CatalogueWatchTest, ChangedContentRaisesTheVersionsAboveWhatWasServed)
{
    EXPECT_EQ(Versions(), Pair(3, 5));
    Json::Value entry = PeopleEntry();
    entry["defaultContainer"]["schema"]["recordTypes"][1]["tableName"] = "changed";
    Install(entry);
    EXPECT_EQ(Versions(), Pair(4, 6));
    EXPECT_EQ(Versions(), Pair(4, 6)) << "the same content is not raised again";
    Restart();
    EXPECT_EQ(Versions(), Pair(4, 6)) << "what was served is remembered over a restart";
    entry["appId"] = "app-8";
    Install(entry);
    EXPECT_EQ(Versions(), Pair(5, 6)) << "a container that did not change keeps its version";
    entry["schemaGroupVersion"] = 20;
    entry["defaultContainer"]["schema"]["version"] = 30;
    Install(entry);
    EXPECT_EQ(Versions(), Pair(20, 30)) << "versions that were raised by hand are taken as they are";
    Install(PeopleEntry());
    EXPECT_EQ(Versions(), Pair(21, 31)) << "versions never go down";
    entry = PeopleEntry();
    entry["defaultContainer"]["schema"]["version"] = 50;
    Install(entry);
    EXPECT_EQ(Versions(), Pair(22, 50)) << "a raised container must not go unnoticed";
}

TEST_F(CatalogueWatchTest, SharedContainersAreRaisedOnTheirOwn)
{
    Json::Value entry = PeopleEntry();
    entry["sharedContainer"] = Json::Value(Json::arrayValue);
    entry["sharedContainer"].append(entry["defaultContainer"]);
    entry["sharedContainer"][0]["name"] = "team";
    Install(entry);
    EXPECT_EQ(AppInfo()["sharedContainer"][0]["schema"]["version"], 5);
    entry["sharedContainer"][0]["databaseName"] = "team.db";
    Install(entry);
    EXPECT_EQ(AppInfo()["sharedContainer"][0]["schema"]["version"], 6);
    EXPECT_EQ(AppInfo()["defaultContainer"]["schema"]["version"], 5);
    EXPECT_THAT(Ask("getStartCursor", J("{'containerName': 'team'}")), Succeeds());
}

TEST_F(CatalogueWatchTest, ABrokenFileLeavesTheLastGoodStateInForce)
{
    NubisTest::LogCapture log;
    EXPECT_EQ(Versions(), Pair(3, 5));
    WriteCatalogueFile("com.example.people.json", "{\"bundleName\": \"com.exa");
    EXPECT_EQ(Versions(), Pair(3, 5));
    EXPECT_EQ(Versions(), Pair(3, 5));
    Json::Value other = PeopleEntry();
    other["bundleName"] = "com.example.other";
    WriteCatalogueFile("com.example.people.json", other.toStyledString());
    EXPECT_EQ(Versions(), Pair(3, 5));
    // Each is logged once, not at every request.
    EXPECT_THAT(log.TakeErrors(),
        testing::ElementsAre(testing::HasSubstr("com.example.people.json: expected JSON: "),
            testing::HasSubstr(
                "bundleName: expected the file's name \"com.example.people\", found text \"com.example.other\"")));
}

// A store whose first write session cannot begin.
class StoreFailingOnce : public Store {
public:
    explicit StoreFailingOnce(Store &store) : store_(store)
    {}

    std::unique_ptr<ReadSession> BeginRead() override
    {
        return store_.BeginRead();
    }
    std::unique_ptr<WriteSession> BeginWrite() override
    {
        if (!failed_) {
            failed_ = true;
            throw StoreError("disk full");
        }
        return store_.BeginWrite();
    }
    void SetNoticeListener(std::function<void()> listener) override
    {
        store_.SetNoticeListener(std::move(listener));
    }

private:
    Store &store_;
    bool failed_ = false;
};

TEST_F(CatalogueWatchTest, AFileThatCouldNotBeTakenOverIsTriedAgain)
{
    StoreFailingOnce store(service_->GetStore());
    Catalogue catalogue(DataPaths::CatalogueOf(folder_.Path()), store);
    EXPECT_THROW(catalogue.Find("com.example.people"), StoreError);
    EXPECT_NE(catalogue.Find("com.example.people"), nullptr);
}

TEST_F(CatalogueWatchTest, BundlesComeAndGoWithTheirFiles)
{
    std::filesystem::remove(DataPaths::CatalogueOf(folder_.Path()) + "/com.example.people.json");
    EXPECT_TRUE(AppInfo().isNull());
    EXPECT_THAT(Ask("getStartCursor"), FailsWith(ErrorCode::UNKNOWN_BUNDLE, "com.example.people", "bundleName"));
    Install(PeopleEntry());
    EXPECT_FALSE(AppInfo().isNull());
}

TEST_F(CatalogueWatchTest, SwitchesBriefsAndParametersComeFromTheEntry)
{
    EXPECT_EQ(Ask("GetCloudAppSwitches", J("{'bundleName': ['com.example.people', 'x']}"))["appSwitchStatus"],
        J("[{'bundleName': 'com.example.people', 'switchStatus': 1}]"));
    EXPECT_EQ(Ask("getAppConfigParams"), J("{'code': 0, 'theme': 'dark'}"));
    Json::Value entry = PeopleEntry();
    for (int i = 0; i < 100; ++i) {
        entry["bundleName"] = "com.example.z" + std::to_string(100 + i);
        Install(entry);
    }
    WriteCatalogueFile("notes.txt", "no catalogue file");
    Json::Value first = Ask("getCloudAppBriefInfo", J("{'index': 0}"));
    EXPECT_EQ(first["appBriefInfos"].size(), 100u);
    EXPECT_EQ(first["appBriefInfos"][0], J(R"({'bundleName': 'com.example.people', 'appId': 'app-7',
        'schemaGroupVersion': 3, 'enableCloud': 0, 'switchStatus': 1, 'verifyRemainSpace': 1})"));
    EXPECT_EQ(first["hasMore"], true);
    EXPECT_EQ(first["maxBodySize"], 1572864);
    Json::Value second = Ask("getCloudAppBriefInfo", Members({{"index", first["nextIndex"]}}));
    EXPECT_EQ(second["appBriefInfos"].size(), 1u);
    EXPECT_EQ(second["hasMore"], false);
    constexpr ErrorCode code = ErrorCode::INVALID_ARGUMENT;
    ExpectRefused({
        {"getCloudAppBriefInfo", "{}", code, "came nothing", "index"},
        {"GetCloudAppInfo", "{'bundleName': 'x'}", code, "expected an array, came text \"x\"", "bundleName"},
        {"GetCloudAppInfo", "{'bundleName': [1]}", code, "expected an array of texts, came integer 1", "bundleName"},
    });
}

} // namespace

} // namespace DriveService
