// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ev_utils.h"
#include "event_lines.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using NubisTest::TextsOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::map<std::string, std::string>;

constexpr const char *REPORT_INFO =
    R"({"code": 0, "reportUrl": "https://report.example", "reportParam": {"region": "eu", "userId": "x", "n": 1}})";

class EvUtilsTest : public NubisTest::KitTest {
protected:
    EvUtilsTest()
    {
        service_->Answer("getReportInfo", REPORT_INFO);
        NubisNative::GetInstance(userId_, NB_SYNC_DEMON_DATA);
    }

    EvUtils &Reporter() const
    {
        return *EvUtils::GetInstance(userId_);
    }

    void Om(const std::string &bundleName = "common", const EvUtils::Fields &extras = {}) const
    {
        const auto param = EvUtils::MakeReportParam("D_01_77_12", bundleName, "getLock", "1234", "it broke");
        Reporter().OmReport(param, "more", "P_01", extras);
    }

    void Op(const std::string &bundleName = "common", const EvUtils::Fields &extras = {}) const
    {
        const auto param = EvUtils::MakeReportParam("plain", bundleName, "sync", "0", "none");
        Reporter().OpReport(param, "", "P_02", extras);
    }

    std::vector<Json::Value> Events() const
    {
        return state_.Read("NubisSDK_" + std::to_string(userId_));
    }

    NubisTest::EventState state_;
};

TEST_F(EvUtilsTest, OnlyOmEventsNameTheirOutcomeByProduct)
{
    Reporter().SetCloudUserId("ann");
    Om("com.ohos.photos");
    Om("com.example.own");
    Op("com.ohos.photos");
    const auto events = Events();
    ASSERT_EQ(events.size(), 3U);
    Texts own{{"operationType", "D"}, {"business_id", "getLock"}, {"traceID", "D_01_77_12"}, {"prepareTraceId", "P_01"},
        {"userID", "ann"}, {"extraInfo", "more"}};
    Texts album = own;
    album.insert(
        {{"pn", "cloudalbum"}, {"error_code", "1234"}, {"error_msg", "it broke"}, {"galleryVersion", "5.3.1.300"}});
    EXPECT_EQ(TextsOf(events[0]["fields"]), album);
    own.insert({{"pn", "sync_com.example.own"}, {"returnCode", "1234"}, {"errorReason", "it broke"}});
    EXPECT_EQ(TextsOf(events[1]["fields"]), own);
    const Texts op{{"pn", "cloudalbum"}, {"operationType", "plain"}, {"business_id", "sync"}, {"traceID", "plain"},
        {"prepareTraceId", "P_02"}, {"userID", "ann"}, {"extraInfo", ""}, {"returnCode", "0"}, {"errorReason", "none"}};
    EXPECT_EQ(TextsOf(events[2]["fields"]), op);
    for (size_t i = 0; i < events.size(); ++i) {
        EXPECT_EQ(events[i]["eventId"], "CloudDrive");
        EXPECT_EQ(events[i]["eventType"], i < 2 ? 1 : 2);
    }
}

TEST_F(EvUtilsTest, ExtrasAddFieldsButReplaceNone)
{
    Reporter().SetCloudUserId("ann");
    Om("common", {{"pn", "other"}, {"returnCode", "0"}, {"error_code", "7"}, {"size", "12"}});
    Op("common", {{"traceID", "other"}, {"errorReason", "other"}, {"size", "13"}});
    const auto events = Events();
    ASSERT_EQ(events.size(), 2U);
    const Texts om = TextsOf(events[0]["fields"]);
    EXPECT_EQ(om.at("pn"), "common");
    EXPECT_EQ(om.at("returnCode"), "1234");
    EXPECT_EQ(om.at("error_code"), "7");
    EXPECT_EQ(om.at("size"), "12");
    const Texts op = TextsOf(events[1]["fields"]);
    EXPECT_EQ(op.at("traceID"), "plain");
    EXPECT_EQ(op.at("errorReason"), "none");
    EXPECT_EQ(op.at("size"), "13");
}

TEST_F(EvUtilsTest, ConfigurationFollowsTheSyncDemon)
{
    const std::string user = std::to_string(userId_);
    struct Case {
        NBCloudSyncDemon demon;
        int serviceId;
        std::string databasePath;
    };
    const std::vector<Case> cases = {
        {NB_SYNC_DEMON_DATA, 1301, "/data/service/el1/public/database/distributeddata/"},
        {NB_SYNC_DEMON_FILE, 5204, "/data/service/el2/" + user + "/hmdfs/cache/cloud_cache/"},
        {NB_SYNC_DEMON_ASSET, 8100, "/data/service/el2/" + user + "/asset_service/"},
    };
    for (const auto &one : cases) {
        NubisNative::GetInstance(userId_, one.demon);
        Reporter().SetCloudUserId("user of " + std::to_string(one.demon));
        Om();
        Op();
        const auto events = Events();
        for (size_t i = events.size() - 2; i < events.size(); ++i) {
            EXPECT_EQ(events[i]["appId"], "com.orvane.tyra.aerostash");
            EXPECT_EQ(events[i]["serviceId"], one.serviceId);
            EXPECT_EQ(events[i]["databasePath"], one.databasePath);
            EXPECT_EQ(events[i]["reportUrl"], "https://report.example");
        }
    }
    EXPECT_EQ(Events().size(), 2 * cases.size());

    NubisTest::LogCapture log;
    for (const int demon : {3, 4, -1}) {
        NubisNative::GetInstance(userId_, static_cast<NBCloudSyncDemon>(demon));
        Reporter().SetCloudUserId("user of " + std::to_string(demon));
        EXPECT_THAT(log.TakeErrors(), ElementsAre("ev init failed, nubis demon is unkown"));
        EXPECT_FALSE(Reporter().Init());
        log.TakeErrors();
    }
    Om();
    Op();
    EXPECT_EQ(Events().size(), 2 * cases.size());
}

TEST_F(EvUtilsTest, ReportsInTheNameOfTheCloudUserOfTheMoment)
{
    NubisTest::LogCapture log;
    Om();
    EXPECT_THAT(log.Take(LOG_DEBUG), Contains("ev init failed, cloud user is empty"));
    EXPECT_THAT(service_->Requests("getReportInfo"), IsEmpty());

    Reporter().SetCloudUserId("ann");
    Om();
    NubisNative::GetInstance(userId_, NB_SYNC_DEMON_ASSET);
    Reporter().SetCloudUserId("ann");
    Om();
    Reporter().SetCloudUserId("bob");
    Op();
    Reporter().ClearCloudUserId();
    Om();
    Op();
    Reporter().SetCloudUserId("bob");
    Op();

    const auto events = Events();
    ASSERT_EQ(events.size(), 4U);
    // The same user again is no reason for a new configuration: the service id is still that of the former demon.
    EXPECT_EQ(events[1]["serviceId"], 1301);
    EXPECT_EQ(events[2]["serviceId"], 8100);
    const std::vector<std::string> users{"ann", "ann", "bob", "bob"};
    for (size_t i = 0; i < events.size(); ++i) {
        EXPECT_EQ(TextsOf(events[i]["reportParams"]), (Texts{{"region", "eu"}, {"userId", users[i]}}));
        EXPECT_EQ(events[i]["fields"]["userID"], users[i]);
    }
    EXPECT_EQ(service_->Requests("getReportInfo").size(), 1U);
}

TEST_F(EvUtilsTest, WithoutReportInfoEventsAreDroppedUntilItCanBeHad)
{
    const std::string noUrl = "get report info failed, report url is empty";
    const std::string noParam = "get report info failed, no report param  or report param is not object";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"code": 7, "error": {"code": 7, "description": "no"}, "reportUrl": "u", "reportParam": {}})", ""},
        {R"(["reportUrl"])", "get report info failed, reply is not object"},
        {R"({"reportParam": {"a": "b"}})", noUrl},
        {R"({"reportUrl": 5, "reportParam": {"a": "b"}})", noUrl},
        {R"({"reportUrl": "https://old.example"})", noParam},
        {R"({"reportUrl": "https://old.example", "reportParam": ["a"]})", noParam},
    };
    NubisTest::LogCapture log;
    for (const auto &[reply, text] : cases) {
        service_->Answer("getReportInfo", reply);
        log.TakeErrors();
        Reporter().SetCloudUserId("ann");
        const auto errors = log.TakeErrors();
        EXPECT_THAT(errors, Contains("ev init failed, get report info failed")) << reply;
        if (!text.empty()) {
            EXPECT_THAT(errors, Contains(text)) << reply;
        }
        Om();
        EXPECT_THAT(Events(), IsEmpty()) << reply;
    }
    service_->Answer("getReportInfo", R"({"reportUrl": "https://new.example", "reportParam": {}})");
    Om();
    const auto events = Events();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0]["reportUrl"], "https://new.example");
    EXPECT_EQ(TextsOf(events[0]["reportParams"]), (Texts{{"userId", "ann"}}));
}

TEST_F(EvUtilsTest, EventsThatTheClientRefusesAreLogged)
{
    Reporter().SetCloudUserId("ann");
    std::ofstream(state_.Path() / "events") << "in the way of the folder";
    NubisTest::LogCapture log;
    Om();
    EXPECT_THAT(log.TakeErrors(), ElementsAre("om report failed, ev on event failed, error code:8"));
    Op();
    EXPECT_THAT(log.TakeErrors(), ElementsAre("op report failed, ev on event failed, error code:8"));
}

TEST_F(EvUtilsTest, ManyReportersConfigureOnceAndLoseNothing)
{
    service_->Answer("getReportInfo", R"({"code": 7})");
    Reporter().SetCloudUserId("ann");
    service_->Answer("getReportInfo", REPORT_INFO);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this] {
            Om();
            Op();
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Events().size(), 16U);
    EXPECT_EQ(service_->Requests("getReportInfo").size(), 2U);
}

TEST(EvUtilsTableTest, EveryBundleHasAProductName)
{
    const Texts pns = {{"com.ohos.photos", "cloudalbum"}, {"com.orvane.tyra.filemanager", "syncdisk"},
        {"com.ohos.contactsdataability", "sync_contact"}, {"com.orvane.tyra.notepad", "sync_notepad"},
        {"com.orvane.tyra.calendardata", "sync_calendar"}, {"com.orvane.tyra.browser", "sync_browser"},
        {"com.orvane.tyra.jotpad", "sync_jotpad"}, {"common", "common"}, {"", "sync_"}, {"Common", "sync_Common"},
        {"com.ohos.photos.extra", "sync_com.ohos.photos.extra"}};
    for (const auto &[bundleName, pn] : pns) {
        EXPECT_EQ(EvUtils::GetOmPnByBundleName(bundleName), pn);
    }
}
} // namespace
