// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drive_callback_stub.h"
#include "ffrt_inner.h"
#include "fake_drive_service.h"
#include "host/manual_clock.h"
#include "json_samples.h"
#include "log_capture.h"

namespace {
using Nubis::DriveCallbackStub;
using NubisTest::FakeDriveService;
using testing::ElementsAre;

class DriveCallbackStubTest : public testing::Test {
protected:
    using Outcome = std::pair<int32_t, std::string>;

    // In a task, so that the manual clock knows when it has begun to wait.
    std::future<Outcome> Wait(const std::string &uuid, int timeout)
    {
        auto promise = std::make_shared<std::promise<Outcome>>();
        ffrt::submit([stub = stub_, promise, uuid, timeout]() {
            std::string reply = "untouched";
            const int32_t status = stub->WaitRequestReply(uuid, reply, timeout);
            promise->set_value({status, reply});
        });
        return promise->get_future();
    }

    OHOS::sptr<DriveCallbackStub> stub_ = new DriveCallbackStub(100);
};

TEST_F(DriveCallbackStubTest, RepliesReachTheirWaiterAsTheyWereSent)
{
    NubisTest::LogCapture log;
    stub_->AddRequest("u1");
    stub_->AddRequest("u2");
    // A failure is the waiter's to judge.
    const std::string failure = R"({ "uuid":"u1", "code": 7 })";
    EXPECT_EQ(FakeDriveService::CallBack(stub_, failure), R"({"code":0})");
    EXPECT_THAT(log.TakeErrors(), ElementsAre("request uuid:u1 reply failed, reply data:" + failure));
    EXPECT_EQ(Wait("u1", 5).get(), std::make_pair(0, failure));

    auto waiting = Wait("u2", 0);
    const std::string success = R"({"uuid":"u2"})";
    EXPECT_EQ(FakeDriveService::CallBack(stub_, success), R"({"code":0})");
    EXPECT_EQ(waiting.get(), std::make_pair(0, success));
}

TEST_F(DriveCallbackStubTest, NobodyWaitsForAnUnknownUuid)
{
    NubisTest::LogCapture log;
    EXPECT_EQ(FakeDriveService::CallBack(stub_, R"({"uuid":"u1"})"), R"({"code":0})");
    EXPECT_EQ(Wait("u1", 0).get(), std::make_pair(2, std::string("untouched")));
    stub_->AddRequest("u2");
    stub_->RemoveRequest("u2");
    EXPECT_EQ(Wait("u2", 0).get().first, 2);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("set request result failed, can not find request uuid:u1",
                                      "can not find request uuid:u1", "can not find request uuid:u2"));
}

TEST_F(DriveCallbackStubTest, AWaitEndsWithItsTime)
{
    NubisTest::LogCapture log;
    Host::ManualClock clock;
    stub_->AddRequest("u1");
    auto waiting = Wait("u1", 5);
    clock.Advance(std::chrono::milliseconds(4999));
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    clock.Advance(std::chrono::milliseconds(1));
    EXPECT_EQ(waiting.get(), std::make_pair(1, std::string("untouched")));
    EXPECT_EQ(Wait("u1", 5).get().first, 2);
    EXPECT_THAT(
        log.TakeErrors(), ElementsAre("wait request uuid:u1 timeout, wait time:5", "can not find request uuid:u1"));
}

TEST_F(DriveCallbackStubTest, EveryWaiterIsWokenAtOnce)
{
    Host::ManualClock clock;
    std::vector<std::future<Outcome>> waiting;
    for (const char *uuid : {"u1", "u2", "u3"}) {
        stub_->AddRequest(uuid);
        waiting.push_back(Wait(uuid, 5));
    }
    clock.Advance(std::chrono::seconds(4));
    stub_->NotifyAllWaitRequest("");
    for (auto &waiter : waiting) {
        EXPECT_EQ(waiter.get(), std::make_pair(0, std::string()));
    }
    EXPECT_EQ(Wait("u1", 0).get().first, 2);
}

TEST_F(DriveCallbackStubTest, RequestsThatHaveNotBegunToWaitEndAsWell)
{
    NubisTest::LogCapture log;
    stub_->AddRequest("u1");
    stub_->AddRequest("u2");
    const std::string reply = R"({"uuid":"u2"})";
    stub_->SetRequestReplyResult("u2", reply);
    stub_->NotifyAllWaitRequest("");
    stub_->NotifyAllWaitRequest("");
    EXPECT_EQ(log.TakeErrors().size(), 2U);
    // Too late: the request has ended.
    stub_->SetRequestReplyResult("u1", "late");
    EXPECT_THAT(log.TakeErrors(), ElementsAre("set request result failed, can not find request uuid:u1"));
    EXPECT_EQ(Wait("u1", 0).get(), std::make_pair(0, std::string()));
    EXPECT_EQ(Wait("u2", 0).get(), std::make_pair(0, reply));
    EXPECT_EQ(Wait("u1", 0).get().first, 2);
}

TEST_F(DriveCallbackStubTest, RequestsThatCannotBeHandledGetNoReply)
{
    NubisTest::LogCapture log;
    const std::vector<std::string> texts = {"{", "[1]", "5", "{}", R"({"function": 7})", R"({"function": "f"})",
        R"({"uuid": 5})", NubisTest::JsonText(NubisTest::NestJson(1500))};
    for (const auto &text : texts) {
        std::string reply = "untouched";
        EXPECT_EQ(stub_->HandleRemoteRequest(text, reply), -1) << text;
        EXPECT_EQ(reply, "untouched");
    }
    const auto errors = log.TakeErrors();
    ASSERT_EQ(errors.size(), texts.size());
    EXPECT_THAT(errors[0], testing::StartsWith("parse remote request failed, recv :{, error:"));
    EXPECT_EQ(errors[3], "handle remote request failed, no function name, recv data :{}");
    EXPECT_EQ(errors[5], "handle remote request failed, no function [f] callback");
    EXPECT_THAT(errors[7], testing::StartsWith("parse remote request failed, recv :"));
}

TEST_F(DriveCallbackStubTest, AWrongTokenIsRefusedBeforeTheText)
{
    NubisTest::LogCapture log;
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    data.WriteInterfaceToken(u"OHOS.Other");
    Nubis::MessageParcelUtil::WriteStringToMessage(data, R"({"uuid": "u1"})");
    EXPECT_EQ(stub_->SendRequest(1, data, reply, option), 1);
    EXPECT_EQ(reply.GetDataSize(), 0U);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("on remote request failed token:OHOS.Other"));
}
// Lengths that lie about what follows; the third would read beyond the parcel.
TEST_F(DriveCallbackStubTest, BrokenParcelsAreFailures)
{
    for (const int32_t length : {0, -1, 100, 134217728, 134217729, std::numeric_limits<int32_t>::min()}) {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(u"OHOS.Drive.DriveCallbackAbility");
        data.WriteInt32(length);
        data.WriteRawData("{}", 2);
        EXPECT_EQ(stub_->SendRequest(1, data, reply, option), -1) << length;
        EXPECT_EQ(reply.GetDataSize(), 0U) << length;
    }
    OHOS::MessageParcel empty;
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    EXPECT_EQ(stub_->SendRequest(1, empty, reply, option), 1);
}
} // namespace
