// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <future>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kit_fixture.h"
#include "log_capture.h"
#include "sys_config.h"
#include "wall_clock.h"

namespace {
using namespace Nubis;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char *FUNCTION = "getSysParameters";
constexpr int64_t DAY = 86400;

class SysConfigTest : public NubisTest::KitTest {
protected:
    SysConfigTest() : config_(SysConfig::GetInstance(userId_))
    {
        WallClock::SetSource([this]() { return nowSeconds_ * 1000; });
    }
    ~SysConfigTest() override
    {
        WallClock::SetSource(nullptr);
    }

    void Serve(const std::string &parameters)
    {
        service_->Answer(FUNCTION, R"({"parameters": )" + parameters + "}");
    }

    bool UseAsyncAfter(const std::string &parameters)
    {
        Serve(parameters);
        EXPECT_TRUE(config_->GetConfigFromCloud());
        return config_->GetUseAsyncIpc();
    }

    std::atomic<int64_t> nowSeconds_{1800000000};
    std::shared_ptr<SysConfig> config_;
};

TEST_F(SysConfigTest, ItIsFetchedOnceADay)
{
    EXPECT_EQ(SysConfig::GetInstance(userId_), config_);
    Serve("[]");
    std::vector<std::future<bool>> first;
    for (int i = 0; i < 8; ++i) {
        first.push_back(std::async(std::launch::async, [this]() { return config_->GetUseAsyncIpc(); }));
    }
    for (auto &asked : first) {
        EXPECT_TRUE(asked.get());
    }
    EXPECT_EQ(Asked(FUNCTION), 1U);
    nowSeconds_ += DAY;
    config_->CheckAndUpdConfig();
    EXPECT_EQ(Asked(FUNCTION), 1U);
    NubisTest::LogCapture log;
    nowSeconds_ += 1;
    config_->CheckAndUpdConfig();
    EXPECT_EQ(Asked(FUNCTION), 2U);
    EXPECT_THAT(
        log.Take(LOG_INFO), Contains("get cloud config from cloud last cfg time:1800000000, now time:1800086401"));
    // A clock that was set back.
    nowSeconds_ -= 1;
    config_->CheckAndUpdConfig();
    EXPECT_EQ(Asked(FUNCTION), 3U);
    config_->CheckAndUpdConfig();
    EXPECT_EQ(Asked(FUNCTION), 3U);
    EXPECT_FALSE(config_->IsRefreshFailed());
}

TEST_F(SysConfigTest, AfterAFailureEveryCallFetchesAndTheSwitchStaysOn)
{
    NubisTest::LogCapture log;
    service_->Answer(FUNCTION, R"({"code": 9, "error": {}})");
    EXPECT_TRUE(config_->GetUseAsyncIpc());
    // The first load, and the refresh that follows because nothing was received.
    EXPECT_EQ(Asked(FUNCTION), 2U);
    EXPECT_TRUE(config_->IsRefreshFailed());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("get config from cloud failed, send data to cloud srv failed",
                                      "get config from cloud failed, send data to cloud srv failed"));
    for (const char *reply : {"{}", R"({"parameters": {}})", "[]", "text"}) {
        service_->Answer(FUNCTION, reply);
        EXPECT_TRUE(config_->GetUseAsyncIpc());
        EXPECT_THAT(
            log.TakeErrors(), ElementsAre("get config fail, parse sys parameters fail, no sys parameters node"));
    }
    EXPECT_EQ(Asked(FUNCTION), 6U);
}

TEST_F(SysConfigTest, OnlyAnIntegerZeroSwitchesOff)
{
    EXPECT_FALSE(UseAsyncAfter(R"([{"key": "ohNubisUseAsyncIPC", "value": 0}])"));
    // What a reply leaves out stays.
    EXPECT_FALSE(UseAsyncAfter("[]"));
    EXPECT_TRUE(UseAsyncAfter(R"([{"key": "ohNubisUseAsyncIPC", "value": "0"}])"));
    EXPECT_FALSE(UseAsyncAfter(R"([{"key": "ohNubisUseAsyncIPC", "value": 0}])"));
    EXPECT_TRUE(UseAsyncAfter(R"([{"key": "ohNubisUseAsyncIPC"}])"));
    EXPECT_TRUE(UseAsyncAfter(R"([{"key": "ohNubisUseAsyncIPC", "value": -3}])"));
}

TEST_F(SysConfigTest, ListsAndFlowControlAreKept)
{
    NubisTest::LogCapture log;
    Serve(R"([5, {"key": "enableQuicDomainList", "value": ["a", 1, "b", 2]}, {"value": 1}, {"key": "sysTimeStamp"},
        {"key": "flowControl", "value": {"flowSpeedLimit": 100, "flowThreshold": 7}},
        {"key": "flowControlWhiteList", "value": ["x", "y"]}])");
    EXPECT_TRUE(config_->GetConfigFromCloud());
    EXPECT_EQ(config_->GetQuicDomainList(), "a,b,");
    EXPECT_EQ(config_->GetFlowControlWhiteList(), "x,y");
    EXPECT_EQ(config_->GetFlowSpeedLimit(), 100U);
    EXPECT_EQ(config_->GetFlowThreshold(), 7U);
    EXPECT_THAT(
        log.TakeErrors(), ElementsAre("unknown sys parameters key:", "unknown sys parameters key:sysTimeStamp"));

    Serve(R"([{"key": "flowControl", "value": {"flowSpeedLimit": 8, "flowThreshold": -1}},
        {"key": "flowControlWhiteList", "value": "x"}])");
    EXPECT_TRUE(config_->GetConfigFromCloud());
    EXPECT_EQ(config_->GetFlowSpeedLimit(), 8U);
    EXPECT_EQ(config_->GetFlowThreshold(), 0U);
    EXPECT_EQ(config_->GetFlowControlWhiteList(), "");
    Serve(R"([{"key": "flowControl", "value": [3]}])");
    EXPECT_TRUE(config_->GetConfigFromCloud());
    EXPECT_EQ(config_->GetFlowSpeedLimit(), 0U);
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
}
} // namespace
