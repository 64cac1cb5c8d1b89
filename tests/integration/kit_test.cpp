// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "blocking_calls.h"
#include "nb_app_info.h"
#include "nb_report.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
// What the kit asks for on behalf of no database.
class KitTest : public NotesTest {
protected:
    // The event client's lines so far.
    std::vector<Json::Value> Events()
    {
        std::vector<Json::Value> events;
        std::ifstream file(Service().Folder() / "state" / "events" / "NubisSDK_100.jsonl");
        Json::Value event;
        for (std::string line; std::getline(file, line);) {
            EXPECT_TRUE(Json::Reader().parse(line, event)) << line;
            events.push_back(event);
        }
        return events;
    }
};

TEST_F(KitTest, TheUserIsTheServices)
{
    NBUserInfo plain;
    NBUserInfo withSpace;

    ASSERT_FALSE(Kit()->GetCloudUserInfo(plain, false).HasError());
    ASSERT_FALSE(Kit()->GetCloudUserInfo(withSpace, true).HasError());

    EXPECT_FALSE(plain.userId.empty());
    EXPECT_EQ(plain.userId, withSpace.userId);
    EXPECT_EQ(plain.pushKeyId, withSpace.pushKeyId);
    EXPECT_EQ(plain.totalSpace, 0U);
    EXPECT_GT(withSpace.totalSpace, withSpace.remainSpace);
}

TEST_F(KitTest, TheCatalogueIsServedInWholeAndInParts)
{
    const std::vector<std::string> bundles{TEST_BUNDLE, "com.example.unknown"};
    std::map<std::string, NBAppInfo> apps;
    std::map<std::string, NBAppSwitchStatus> switches;
    std::vector<NBAppBriefInfo> briefs;
    NBUploadSize uploadSize{0, 0};
    bool hasMore = true;
    int nextIndex = -1;

    EXPECT_FALSE(Kit()->GetCloudAppInfo(bundles, apps).HasError());
    EXPECT_FALSE(Kit()->GetCloudAppSwitches(bundles, switches).HasError());
    EXPECT_FALSE(Kit()->GetCloudAppBriefInfo(0, briefs, hasMore, nextIndex, uploadSize).HasError());

    ASSERT_EQ(apps.size(), 1U);
    const NBAppInfo &app = apps[TEST_BUNDLE];
    EXPECT_EQ(app.appId, "notes-1");
    EXPECT_EQ(app.enableCloud, 1);
    EXPECT_EQ(app.defaultContainer.containerName, TEST_CONTAINER);
    EXPECT_EQ(app.defaultContainer.maxBatchNumber, 1000U);
    EXPECT_EQ(app.defaultContainer.schema.recordTypes.at("note").fields.size(), 9U);
    EXPECT_EQ(switches, (std::map<std::string, NBAppSwitchStatus>{{TEST_BUNDLE, app.switchStatus}}));
    ASSERT_EQ(briefs.size(), 1U);
    EXPECT_EQ(briefs[0].schemaGroupVersion, app.schemaGroupVersion);
    EXPECT_FALSE(hasMore);
    EXPECT_GT(uploadSize.maxBodySize, 0U);
    std::map<std::string, std::string> params;
    EXPECT_FALSE(Kit()->GetAppConfigParams(TEST_BUNDLE, params).HasError());
}

TEST_F(KitTest, FailuresAndMilestonesReachTheEventClient)
{
    // Nothing is reported in the name of nobody.
    NBUserInfo user;
    ASSERT_FALSE(Kit()->GetCloudUserInfo(user, false).HasError());
    ASSERT_TRUE(Changes(Database(), "nonsense").error.IsServerError());
    ASSERT_EQ(Events().size(), 1U);
    EXPECT_EQ(Events()[0]["fields"]["pn"].asString(), std::string("sync_") + TEST_BUNDLE);

    const NBReport report = *Kit()->GetReport();
    EXPECT_TRUE(report.Report(SYNC_STATUS_END, report.GetPrepareTarceId(), TEST_BUNDLE, {{"saved", "3"}}));

    const std::vector<Json::Value> events = Events();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[2]["fields"]["saved"].asString(), "3");
    // Where to report to is the service's word.
    EXPECT_FALSE(events[2]["reportUrl"].asString().empty()) << events[2].toStyledString();
}
} // namespace
