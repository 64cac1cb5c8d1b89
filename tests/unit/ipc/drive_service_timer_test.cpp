// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ffrt_inner.h"
#include "host/manual_clock.h"
#include "log_capture.h"
#include "proxy_fixture.h"
#include "wall_clock.h"

namespace {
using namespace Nubis;
using std::chrono::seconds;
using testing::Contains;
using testing::Not;

constexpr seconds TICK(5);

// Time is the test's: FFRT and the wall clock stand on one manual clock.
class TimerTest : public NubisTest::ProxyTest {
protected:
    TimerTest()
    {
        WallClock::SetSource([this]() {
            return std::chrono::duration_cast<std::chrono::milliseconds>(clock_.Now().time_since_epoch()).count();
        });
    }
    ~TimerTest() override
    {
        WallClock::SetSource(nullptr);
    }

    // Connects and lets the greeting and the start of the timer come to rest.
    std::unique_ptr<DriveServiceProxy> ConnectAndRest(const std::string &greetingReply = R"({"code": 0})")
    {
        service_ = NubisTest::FakeDriveService::Offer(userId_);
        service_->Answer("getAppState", greetingReply);
        auto proxy = std::make_unique<DriveServiceProxy>(userId_);
        service_->WaitFor("getAppState", 1);
        EXPECT_TRUE(log_.WaitFor(" ms,"));
        clock_.Advance(seconds(0));
        log_.Take(LOG_INFO);
        return proxy;
    }

    // A request that stays in flight until the future of the result is let go by Open.
    std::future<NubisTest::SendOutcome> HoldRequest(DriveServiceProxy &proxy, int timeout)
    {
        service_->AnswerBehind("getLock", gate_);
        auto sent = SendAside(proxy, "getLock", timeout);
        service_->WaitFor("getLock", 1);
        return sent;
    }

    // The greeting of a new connection begins the idle time anew, at any tick.
    bool DisconnectsWithin(int ticks)
    {
        const auto disconnects = [this]() {
            clock_.Advance(TICK);
            const auto infos = log_.Take(LOG_INFO);
            return std::find(infos.begin(), infos.end(), "disconnect ability") != infos.end();
        };
        while (ticks > 0 && !disconnects()) {
            --ticks;
        }
        return ticks > 0;
    }

    Host::ManualClock clock_;
    NubisTest::LogCapture log_;
    std::promise<void> gate_;
};

TEST_F(TimerTest, AnIdleServiceIsDisconnectedAndTheTimerStops)
{
    const auto proxy = ConnectAndRest();
    clock_.Advance(12 * TICK);
    EXPECT_THAT(log_.Take(LOG_INFO), Not(Contains("disconnect ability")));
    clock_.Advance(TICK);
    ASSERT_TRUE(log_.WaitFor("Remove death recipient success"));
    clock_.Advance(22 * TICK);
    EXPECT_THAT(log_.Take(LOG_INFO), Not(Contains("stop timer")));
    clock_.Advance(TICK);
    EXPECT_THAT(log_.Take(LOG_INFO), Contains("stop timer").Times(1));

    // The next request brings both back.
    EXPECT_EQ(Send(*proxy, "deleteLock").status, 0);
    const auto infos = log_.Take(LOG_INFO);
    EXPECT_THAT(infos, Contains("connect extension ability").Times(1));
    EXPECT_THAT(infos, Contains("start timer").Times(1));
}

TEST_F(TimerTest, RequestsBeginTheIdleTimeAnew)
{
    const auto proxy = ConnectAndRest();
    for (int i = 0; i < 3; ++i) {
        clock_.Advance(12 * TICK);
        EXPECT_EQ(Send(*proxy, "deleteLock").status, 0);
    }
    EXPECT_THAT(log_.Take(LOG_INFO), Not(Contains("disconnect ability")));
}

TEST_F(TimerTest, ARequestInFlightKeepsTheServiceAndAsksHowItIs)
{
    const auto proxy = ConnectAndRest(R"({"code": 0, "checkAlive": 1})");
    clock_.Advance(TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), 1U);
    auto sent = HoldRequest(*proxy, 600);
    clock_.Advance(2 * TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), 3U);
    // A failure tells nothing new, a success without the member turns the asking off.
    service_->Answer("getAppState", R"({"code": 3, "error": {}})");
    clock_.Advance(TICK);
    service_->Answer("getAppState", R"([])");
    clock_.Advance(TICK);
    service_->Answer("getAppState", R"({"code": 0, "checkAlive": true})");
    clock_.Advance(TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), 6U);
    clock_.Advance(20 * TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), 6U);
    const auto infos = log_.Take(LOG_INFO);
    EXPECT_THAT(infos, Not(Contains("disconnect ability")));
    gate_.set_value();
    EXPECT_EQ(sent.get().status, 0);
}

TEST_F(TimerTest, ALateRequestIsLoggedOnceAndStopsTheAsking)
{
    const auto proxy = ConnectAndRest(R"({"code": 0, "checkAlive": 1})");
    // Without a time of its own a request has 180 s.
    auto sent = HoldRequest(*proxy, 0);
    clock_.Advance(seconds(180));
    EXPECT_THAT(log_.TakeErrors(), testing::IsEmpty());
    const size_t asked = service_->Requests("getAppState").size();
    clock_.Advance(10 * TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), asked);
    EXPECT_THAT(log_.TakeErrors(), testing::ElementsAre("request id:t1 is timeout, timeout:180"));
    gate_.set_value();
    EXPECT_EQ(sent.get().status, 0);
}

TEST_F(TimerTest, AGreetingThatHangsHoldsNothingUp)
{
    const auto proxy = ConnectAndRest(R"({"code": 0, "checkAlive": 1})");
    auto sent = HoldRequest(*proxy, 60);
    std::promise<void> greetingGate;
    service_->AnswerWith("getAppState", [opened = greetingGate.get_future().share()](const Json::Value &) {
        opened.wait();
        return std::string(R"({"code": 0, "checkAlive": 1})");
    });
    clock_.Advance(TICK);
    service_->WaitFor("getAppState", 2);
    clock_.Advance(20 * TICK);
    EXPECT_EQ(service_->Requests("getAppState").size(), 2U);
    EXPECT_THAT(log_.TakeErrors(), testing::ElementsAre("request id:t1 is timeout, timeout:60"));
    // A new connection is greeted all the same, after the greeting that is under way.
    proxy->StartGreeting(true);
    greetingGate.set_value();
    service_->WaitFor("getAppState", 3);
    gate_.set_value();
    EXPECT_EQ(sent.get().status, 0);
}

TEST_F(TimerTest, ARequestThatMeetsAnIdleDisconnectReconnects)
{
    const auto proxy = ConnectAndRest();
    log_.Hold("ability disconnect");
    std::promise<int32_t> status;
    // In tasks: the clock leaves the tick behind when the disconnect does not end, and returns when the request waits.
    clock_.Advance(13 * TICK);
    ffrt::submit([&]() { status.set_value(Send(*proxy, "deleteLock").status); });
    clock_.Advance(seconds(0));
    EXPECT_TRUE(service_->Requests("deleteLock").empty());
    log_.LetGo();
    EXPECT_EQ(status.get_future().get(), 0);
}

TEST_F(TimerTest, ARequestThatCrossesTheEndOfTheTimerHasOne)
{
    const auto proxy = ConnectAndRest();
    for (int round = 0; round < 100; ++round) {
        clock_.Advance(35 * TICK);
        auto sent = SendAside(*proxy, "deleteLock");
        clock_.Advance(TICK);
        ASSERT_EQ(sent.get().status, 0);
        log_.Take(LOG_INFO);
        ASSERT_TRUE(DisconnectsWithin(60)) << round;
        ASSERT_EQ(Send(*proxy, "deleteLock").status, 0);
    }
}

TEST_F(TimerTest, TheTimerEndsWithItsProxy)
{
    ConnectAndRest().reset();
    clock_.Advance(2 * TICK);
    EXPECT_THAT(log_.TakeErrors(), testing::IsEmpty());
    EXPECT_FALSE(clock_.WaitForPending(1, seconds(0)));
}
} // namespace
