// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/faults.h"
#include "host/manual_clock.h"
#include "log_capture.h"
#include "proxy_fixture.h"
#include "urgent_scope.h"

namespace {
using namespace Nubis;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class RequestTest : public NubisTest::ProxyTest {};

TEST_F(RequestTest, SynchronousRequestsAreAnsweredInTheReply)
{
    NubisTest::LogCapture log;
    const auto proxy = Connect();
    service_->Answer("getLock", R"({"lockSessionId": "s"})");
    const auto outcome = Send(*proxy, "getLock");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.reply, R"({"lockSessionId": "s"})");
    EXPECT_FALSE(outcome.request.isMember("uuid"));
    EXPECT_EQ(service_->WaitFor("getLock", 1)[0].request, outcome.request);
    const auto infos = log.Take(LOG_INFO);
    EXPECT_THAT(infos, Contains("send data request:t1, function:getLock"));
    EXPECT_THAT(infos, Contains(testing::MatchesRegex("recv data request:t1, function:getLock, cost:[0-9]+ ms,")));
}

TEST_F(RequestTest, OnlySavesAndModifiesBringTheCallbackObject)
{
    const auto proxy = Connect();
    for (const char *function : {"saveRecords", "modifyRecords", "deleteRecords", "fetchRecordWithId"}) {
        Send(*proxy, function);
    }
    EXPECT_NE(service_->WaitFor("saveRecords", 1)[0].callback, nullptr);
    EXPECT_EQ(service_->WaitFor("deleteRecords", 1)[0].callback, nullptr);
    EXPECT_EQ(service_->WaitFor("fetchRecordWithId", 1)[0].callback, nullptr);
    // It is a real object: it answers, and refuses what it does not know.
    const auto callback = service_->WaitFor("modifyRecords", 1)[0].callback;
    EXPECT_EQ(NubisTest::FakeDriveService::CallBack(callback, R"({"uuid": "nobody's"})"), R"({"code":0})");
    EXPECT_EQ(NubisTest::FakeDriveService::CallBack(callback, R"({"function": "unknown"})"), "");
}

TEST_F(RequestTest, AsynchronousRequestsAreAnsweredThroughTheCallbackObject)
{
    const auto proxy = Connect({{"abilityVersion", "2"}}, true);
    auto fetched = SendAside(*proxy, "fetchRecordWithId");
    const auto arrival = service_->WaitFor("fetchRecordWithId", 1)[0];
    EXPECT_TRUE(arrival.isAsync);
    EXPECT_FALSE(arrival.request["uuid"].asString().empty());
    EXPECT_EQ(
        NubisTest::FakeDriveService::ReplyTo(arrival, NubisTest::ParseJson(R"({"recordId": "r"})")), R"({"code":0})");
    const auto outcome = fetched.get();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(NubisTest::ParseJson(outcome.reply)["recordId"], "r");
    EXPECT_EQ(outcome.request["uuid"], arrival.request["uuid"]);

    Send(*proxy, "saveRecords");
    EXPECT_FALSE(service_->WaitFor("saveRecords", 1)[0].isAsync);
}

TEST_F(RequestTest, AReplyThatComesBeforeTheTransactionHasReturnedIsTheReply)
{
    const auto proxy = Connect({{"abilityVersion", "3"}}, true);
    service_->AnswerAsyncAtOnce("saveRecords", R"({"code": 7})");
    const auto outcome = Send(*proxy, "saveRecords");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(NubisTest::ParseJson(outcome.reply)["code"], 7);
}

TEST_F(RequestTest, AnAsynchronousWaitHasTheCallersTime)
{
    Host::ManualClock clock;
    const auto proxy = Connect({{"abilityVersion", "3"}}, true);
    auto sent = SendAside(*proxy, "saveRecords", 7);
    const auto arrival = service_->WaitFor("saveRecords", 1)[0];
    // The wait begins some time after the request has arrived, and then takes seven seconds.
    while (sent.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        clock.Advance(std::chrono::seconds(1));
    }
    EXPECT_EQ(sent.get().status, 1);
    // Too late, and harmless.
    EXPECT_EQ(NubisTest::FakeDriveService::ReplyTo(arrival, Json::Value(Json::objectValue)), R"({"code":0})");
}

TEST_F(RequestTest, ATransactionThatFailsIsReportedAndForgotten)
{
    const auto proxy = Connect({{"abilityVersion", "3"}}, true);
    ASSERT_TRUE(proxy->IsSupportAsync("saveRecords"));
    NubisTest::LogCapture log;
    Host::FaultPlan plan;
    plan.sendFailure = 1000;
    const Host::FaultScope faults(plan);
    EXPECT_NE(Send(*proxy, "getLock").status, 0);
    EXPECT_NE(Send(*proxy, "saveRecords").status, 0);
    const auto errors = log.TakeErrors();
    EXPECT_THAT(errors, Contains(HasSubstr("send request failed, request:t1, cost:")).Times(2));
    EXPECT_THAT(errors, Contains(HasSubstr("send async request failed, request:t1, error code:")).Times(1));
}

TEST_F(RequestTest, TwelveRequestsAreInFlightAtMost)
{
    const auto proxy = Connect();
    std::atomic<int> present{0};
    std::atomic<int> surplus{0};
    // The first twelve wait for each other.
    service_->AnswerWith("getLock", [&](const Json::Value &) {
        surplus += ++present > 12 ? 1 : 0;
        service_->WaitFor("getLock", 12);
        --present;
        return std::string("{}");
    });
    std::vector<std::future<NubisTest::SendOutcome>> sent;
    for (int i = 0; i < 40; ++i) {
        sent.push_back(SendAside(*proxy, "getLock", -1, std::to_string(i)));
    }
    for (auto &outcome : sent) {
        EXPECT_EQ(outcome.get().status, 0);
    }
    EXPECT_EQ(surplus, 0);
}

TEST_F(RequestTest, TheThirteenthRequestWaitsForASlot)
{
    const auto proxy = Connect();
    std::promise<void> gate;
    service_->AnswerBehind("getLock", gate);
    std::vector<std::future<NubisTest::SendOutcome>> sent;
    for (int i = 0; i < 12; ++i) {
        sent.push_back(SendAside(*proxy, "getLock"));
    }
    service_->WaitFor("getLock", 12);
    // In a task: the clock returns when that waits for FFRT, which is for a slot.
    std::promise<int32_t> thirteenth;
    ffrt::submit([&]() { thirteenth.set_value(Send(*proxy, "deleteLock").status); });
    Host::ManualClock().Advance(std::chrono::seconds(0));
    EXPECT_TRUE(service_->Requests("deleteLock").empty());
    gate.set_value();
    for (auto &outcome : sent) {
        EXPECT_EQ(outcome.get().status, 0);
    }
    EXPECT_EQ(thirteenth.get_future().get(), 0);
}

TEST_F(RequestTest, UrgentRequestsBeyond64WaitButNotForThoseThatStandStill)
{
    Host::ManualClock clock;
    const auto proxy = Connect();
    std::promise<void> gate;
    service_->AnswerBehind("getLock", gate);
    std::vector<std::future<int32_t>> sent;
    for (int i = 0; i < 64; ++i) {
        sent.push_back(std::async(std::launch::async, [&proxy]() {
            const UrgentScope urgent;
            return Send(*proxy, "getLock").status;
        }));
    }
    service_->WaitFor("getLock", 64);
    std::promise<int32_t> another;
    ffrt::submit([&]() {
        const UrgentScope urgent;
        another.set_value(Send(*proxy, "deleteLock").status);
    });
    clock.Advance(std::chrono::seconds(4));
    EXPECT_TRUE(service_->Requests("deleteLock").empty());
    clock.Advance(std::chrono::seconds(1));
    EXPECT_EQ(another.get_future().get(), 0);
    gate.set_value();
    for (auto &status : sent) {
        EXPECT_EQ(status.get(), 0);
    }
}
} // namespace
