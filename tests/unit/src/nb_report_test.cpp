// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ev_utils.h"
#include "event_lines.h"
#include "kit_fixture.h"
#include "nb_report.h"

namespace {
using namespace Nubis;
using NubisTest::TextsOf;
using testing::MatchesRegex;
using Texts = std::map<std::string, std::string>;

class NBReportTest : public NubisTest::KitTest {
protected:
    NBReportTest()
    {
        service_->Answer("getReportInfo", R"({"reportUrl": "https://report.example", "reportParam": {}})");
        EvUtils::GetInstance(userId_)->SetCloudUserId("ann");
    }

    std::vector<Json::Value> Events() const
    {
        return state_.Read("NubisSDK_" + std::to_string(userId_));
    }

    NubisTest::EventState state_;
};

TEST_F(NBReportTest, EveryMilestoneIsReportedOnceOfEachType)
{
    const std::map<int, std::string> names = {{0, "cloudsync_sync_prepare"}, {1, "cloudsync_sync_strart"},
        {2, "cloudsync_sync_end"}, {7, "cloudsync_unknown"}, {-1, "cloudsync_unknown"}};
    const auto report = kit_->GetReport();
    std::vector<std::pair<int, std::string>> expected;
    for (const auto &[flag, name] : names) {
        EXPECT_TRUE(report->Report(static_cast<SyncStatusFlag>(flag), "F_01_5", "common", {}));
        expected.insert(expected.end(), {{1, name}, {2, name}});
    }
    std::vector<std::pair<int, std::string>> reported;
    for (const auto &event : Events()) {
        reported.emplace_back(event["eventType"].asInt(), event["fields"]["business_id"].asString());
    }
    EXPECT_EQ(reported, expected);
    // Events that are dropped make no difference to the caller.
    EvUtils::GetInstance(userId_)->ClearCloudUserId();
    EXPECT_TRUE(report->Report(SYNC_STATUS_START, "F_01_5", "common", {}));
    EXPECT_EQ(Events().size(), expected.size());
}

TEST_F(NBReportTest, ParamsAreTheOutcomeAndFieldsOfTheirOwn)
{
    const auto report = kit_->GetReport();
    const Texts outcome{{"errorCode", "12"}, {"errorMsg", "broken"}};
    Texts params = outcome;
    params.insert({{"ErrorCode", "kept"}, {"count", "3"}, {"userID", "not taken"}});
    ASSERT_TRUE(report->Report(SYNC_STATUS_END, "F_01_5", "com.orvane.tyra.filemanager", params));
    ASSERT_TRUE(report->Report(SYNC_STATUS_END, "F_01_5", "com.orvane.tyra.filemanager", outcome));

    const auto events = Events();
    ASSERT_EQ(events.size(), 4U);
    const Texts plain{{"pn", "syncdisk"}, {"operationType", "F"}, {"business_id", "cloudsync_sync_end"},
        {"traceID", "F_01_5"}, {"prepareTraceId", "F_01_5"}, {"userID", "ann"}, {"extraInfo", ""}, {"returnCode", "12"},
        {"errorReason", "broken"}};
    Texts withExtras = plain;
    withExtras.insert({{"ErrorCode", "kept"}, {"count", "3"}});
    EXPECT_EQ(TextsOf(events[0]["fields"]), withExtras);
    EXPECT_EQ(TextsOf(events[1]["fields"]), withExtras);
    EXPECT_EQ(TextsOf(events[2]["fields"]), plain);
    EXPECT_EQ(TextsOf(events[3]["fields"]), plain);
}

TEST_F(NBReportTest, PrepareTraceIdsAreNewAndCarryTheDemonOfTheirReporter)
{
    const auto fileReport = kit_->GetReport();
    NubisNative::GetInstance(userId_, NB_SYNC_DEMON_ASSET);
    const auto assetReport = kit_->GetReport();
    const std::string traceId = fileReport->GetPrepareTarceId();
    EXPECT_THAT(traceId, MatchesRegex("30000_01_[0-9]+_[0-9]+"));
    EXPECT_NE(fileReport->GetPrepareTarceId(), traceId);
    EXPECT_THAT(assetReport->GetPrepareTarceId(), MatchesRegex("40000_01_[0-9]+_[0-9]+"));
}
} // namespace
