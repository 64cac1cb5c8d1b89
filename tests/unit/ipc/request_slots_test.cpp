// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ev_utils.h"
#include "kit_fixture.h"
#include "process_helper.h"
#include "start_task.h"

namespace {
using namespace Nubis;

constexpr size_t SLOTS = 12;
constexpr std::chrono::seconds PATIENCE(30);

// A kit whose slots are all taken, by requests that the service does not answer before Open.
class FullKitTest : public NubisTest::KitTest {
protected:
    FullKitTest() : KitTest({{"abilityVersion", "3"}})
    {
        service_->AnswerBehind("getLock", gate_);
        service_->AnswerAsyncAtOnce("saveRecords", "{}");
    }

    bool Send(const std::string &function)
    {
        Json::Value request;
        request["function"] = function;
        Json::Value reply;
        return !kit_->SendDataToCloudSrv(request, reply, -1).HasError();
    }

    std::future<bool> SendAside(const std::string &function)
    {
        return std::async(std::launch::async, [this, function]() { return Send(function); });
    }

    void FillSlots()
    {
        for (size_t i = 0; i < SLOTS; ++i) {
            sent_.push_back(SendAside("getLock"));
        }
        service_->WaitFor("getLock", SLOTS);
    }

    void Open()
    {
        gate_.set_value();
        for (auto &sent : sent_) {
            EXPECT_TRUE(sent.get());
        }
    }

    std::promise<void> gate_;
    std::vector<std::future<bool>> sent_;
};

TEST_F(FullKitTest, TheParametersAreFetchedWithoutASlot)
{
    FillSlots();
    // The first of its kind: it has no slot yet, and needs none to settle its way.
    auto user = SendAside("saveRecords");
    EXPECT_NO_THROW(service_->WaitFor("getSysParameters", 1));
    EXPECT_TRUE(service_->Requests("saveRecords").empty());
    Open();
    EXPECT_TRUE(user.get());
    EXPECT_TRUE(service_->WaitFor("saveRecords", 1)[0].isAsync);
}

TEST_F(FullKitTest, FirstRequestsAtOnceDoNotWaitForEachOther)
{
    // Without the parameters every request fetches them anew.
    service_->Answer("getSysParameters", R"({"code": 5, "error": {}})");
    std::vector<std::future<bool>> sent;
    for (size_t i = 0; i < 3 * SLOTS; ++i) {
        sent.push_back(SendAside("saveRecords"));
    }
    for (auto &one : sent) {
        ASSERT_EQ(one.wait_for(PATIENCE), std::future_status::ready);
        EXPECT_TRUE(one.get());
    }
    Open();
}

TEST_F(FullKitTest, WhatAnUploadRequestNeedsIsSentWithoutASlot)
{
    ASSERT_TRUE(Send("saveRecords"));
    const auto stub = service_->WaitFor("saveRecords", 1)[0].callback;
    // The callback asks itself, and waits for a task of its own that asks too.
    kit_->SetUploadAssetCallBack(ProcessHelper::GetCurProcessName(), [this](const std::string &, std::string &reply) {
        std::promise<bool> aside;
        StartTask([&]() { aside.set_value(Send("getRecordIdRules")); });
        reply = Send("getServiceKey") && aside.get_future().get() ? "served" : "failed";
        return 0;
    });
    FillSlots();
    auto called = std::async(std::launch::async, [&stub]() {
        return NubisTest::FakeDriveService::CallBack(
            stub, R"({"function": "onUploadRecordAssets", "bundleName": "b", "containerName": "c"})");
    });
    EXPECT_EQ(called.wait_for(PATIENCE), std::future_status::ready);
    Open();
    EXPECT_EQ(called.get(), "served");
}

// Whoever serves the service's own request may need the same lock, and the slots are free only after that.
TEST_F(FullKitTest, NoLockIsHeldWhileWaitingForASlot)
{
    const auto container = kit_->GetContainer(NubisTest::BUNDLE, "main");
    const auto database = container->GetPrivateDatabase();
    const auto progress = std::make_shared<NBProgressMap>();
    NBDatabase::AddProgressCallBack(
        "task", [this](auto, auto) { Send("getAccessToken"); }, nullptr, progress);
    NBDatabase::EnableProgressCallBack("task");
    const size_t keysBefore = Asked("getServiceKey");
    FillSlots();
    std::vector<std::future<void>> holders;
    holders.push_back(std::async(std::launch::async, [&]() { database->GetServiceKey(); }));
    holders.push_back(std::async(std::launch::async, [&]() { EvUtils::GetInstance(userId_)->SetCloudUserId("ann"); }));
    holders.push_back(std::async(std::launch::async, []() { NBDatabase::TimerProgressFunc(nullptr); }));
    for (auto &holder : holders) {
        EXPECT_EQ(holder.wait_for(PATIENCE), std::future_status::ready);
    }
    EXPECT_EQ(Asked("getServiceKey"), keysBefore + 1);
    EXPECT_EQ(Asked("getReportInfo"), 1U);
    EXPECT_EQ(Asked("getAccessToken"), 1U);
    NBDatabase::RemoveProgressCallBack("task");
    Open();
}
} // namespace
