// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drive_ipc_connect.h"
#include "ipc_object_proxy.h"
#include "element_name.h"
#include "errors.h"
#include "log_capture.h"
#include "proxy_fixture.h"

namespace {
using namespace Nubis;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ConnectionTest : public NubisTest::ProxyTest {
protected:
    // Returns when the proxy has let go of the connection; before that its requests still go to the dead object.
    void KillService(DriveServiceProxy &proxy) const
    {
        NubisTest::FakeDriveService::Kill(userId_);
        while (Send(proxy, "getLock").status != DriveServiceProxy::SEND_NOT_CONNECTED) {
        }
    }
};

TEST_F(ConnectionTest, TheVersionComesFromTheMetadata)
{
    NubisTest::LogCapture log;
    const auto supports = [this](const Host::AbilityRegistry::Metadata &metadata) {
        const auto proxy = Connect(metadata, true);
        return std::make_pair(proxy->IsSupportAsync("GetCloudUserInfo"), proxy->IsSupportAsync("saveRecords"));
    };
    EXPECT_EQ(supports({{"abilityVersion", "3"}}), std::make_pair(true, true));
    EXPECT_THAT(log.Take(LOG_INFO), Contains("get ablity verison:3"));
    EXPECT_EQ(supports({{"abilityVersion", "2 or so"}}), std::make_pair(true, false));
    EXPECT_EQ(supports({{"abilityVersion", "x"}, {"other", "3"}}), std::make_pair(false, false));
    EXPECT_THAT(log.Take(LOG_INFO), Contains("get ablity verison:0"));
    EXPECT_EQ(supports({}), std::make_pair(false, false));
    EXPECT_THAT(log.Take(LOG_INFO), testing::Not(Contains(StartsWith("get ablity verison"))));
}

TEST_F(ConnectionTest, WithoutAServiceRequestsFailAsNotConnected)
{
    NubisTest::LogCapture log;
    DriveServiceProxy proxy(userId_);
    EXPECT_EQ(Send(proxy, "getLock").status, 19);
    EXPECT_THAT(log.TakeErrors(), AllOf(Contains(StartsWith("connect ability fail, error code:")),
                                      Contains("send request failed, ipcconnect is null or is not connect")));
    // It is looked for anew by each request.
    service_ = NubisTest::FakeDriveService::Offer(userId_);
    EXPECT_EQ(Send(proxy, "getLock").status, 0);
}

TEST_F(ConnectionTest, OneOfManyRequestsReconnectsAfterADeath)
{
    const auto proxy = Connect();
    KillService(*proxy);
    NubisTest::LogCapture log;
    service_->OfferAgain(userId_);
    std::vector<std::future<NubisTest::SendOutcome>> sent;
    for (int i = 0; i < 12; ++i) {
        sent.push_back(SendAside(*proxy, "getLock", -1, std::to_string(i)));
    }
    for (auto &outcome : sent) {
        EXPECT_EQ(outcome.get().status, 0);
    }
    EXPECT_THAT(log.Take(LOG_INFO), Contains("connect extension ability").Times(1));
}

TEST_F(ConnectionTest, RequestsBehindAFailedAttemptShareItsResult)
{
    const auto proxy = Connect();
    KillService(*proxy);
    NubisTest::LogCapture log;
    service_->OfferAgain(userId_);
    // The connection does not come in time.
    log.Hold("ability connect success, ability name:DriveServiceAbility");
    std::vector<std::future<NubisTest::SendOutcome>> sent;
    for (int i = 0; i < 8; ++i) {
        sent.push_back(SendAside(*proxy, "getLock"));
    }
    for (auto &outcome : sent) {
        EXPECT_EQ(outcome.get().status, 19);
    }
    log.LetGo();
    EXPECT_THAT(log.Take(LOG_INFO), Contains("connect extension ability").Times(1));
}

TEST_F(ConnectionTest, ADeathEndsEveryAsynchronousWait)
{
    const auto proxy = Connect({{"abilityVersion", "3"}}, true);
    std::vector<std::future<NubisTest::SendOutcome>> sent;
    for (int i = 0; i < 5; ++i) {
        sent.push_back(SendAside(*proxy, "saveRecords", -1, std::to_string(i)));
    }
    service_->WaitFor("saveRecords", sent.size());
    NubisTest::FakeDriveService::Kill(userId_);
    for (auto &outcome : sent) {
        ASSERT_EQ(outcome.wait_for(std::chrono::seconds(30)), std::future_status::ready);
        EXPECT_EQ(outcome.get().reply, "");
    }
}

TEST_F(ConnectionTest, AConnectionMayOutliveItsProxy)
{
    NubisTest::LogCapture log;
    Connect().reset();
    NubisTest::FakeDriveService::Kill(userId_);
    ASSERT_TRUE(log.WaitFor("Remove death recipient success"));
    EXPECT_THAT(log.TakeErrors(), testing::Not(Contains(StartsWith("notify all"))));
}

// The connection by itself, with remote objects that a test names.
class IpcConnectTest : public testing::Test {
protected:
    struct Remote : public OHOS::IPCObjectStub {};

    void ConnectTo(const OHOS::sptr<OHOS::IRemoteObject> &remote, int code = 0)
    {
        connect_->OnAbilityConnectDone(element_, remote, code);
    }

    int32_t Send() const
    {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        return connect_->SendData(3, data, reply, option);
    }

    const OHOS::AppExecFwk::ElementName element_{"", "bundle", "TheAbility"};
    const OHOS::sptr<DriveIpcConnect> connect_ = new DriveIpcConnect(std::make_shared<ProxyLink>(nullptr));
    const OHOS::sptr<OHOS::IRemoteObject> first_ = new Remote;
    const OHOS::sptr<OHOS::IRemoteObject> second_ = new Remote;
};

TEST_F(IpcConnectTest, ARefusedConnectionIsNone)
{
    NubisTest::LogCapture log;
    ConnectTo(first_, 5);
    EXPECT_FALSE(connect_->IsConnected());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("ability connect failed, error code:5"));
    ConnectTo(nullptr);
    EXPECT_FALSE(connect_->IsConnected());
    EXPECT_EQ(Send(), 19);
    ConnectTo(first_);
    EXPECT_TRUE(connect_->IsConnected());
    EXPECT_THAT(log.Take(LOG_INFO), Contains("ability connect success, ability name:TheAbility"));
}

TEST_F(IpcConnectTest, LateNoticesOfAnOldObjectLeaveTheNewOne)
{
    ConnectTo(first_);
    connect_->OnRemoteDied(first_);
    EXPECT_FALSE(connect_->IsConnected());
    ConnectTo(second_);
    connect_->OnAbilityDisconnectDone(element_, -1);
    connect_->OnRemoteDied(first_);
    EXPECT_TRUE(connect_->IsConnected());
    connect_->OnAbilityDisconnectDone(element_, 0);
    EXPECT_FALSE(connect_->IsConnected());

    ConnectTo(first_);
    connect_->OnAbilityDisconnectDone(element_, -1);
    EXPECT_FALSE(connect_->IsConnected());
    ConnectTo(second_);
    connect_->OnRemoteDied(first_);
    EXPECT_TRUE(connect_->IsConnected());
    connect_->OnRemoteDied();
    EXPECT_FALSE(connect_->IsConnected());
}

TEST_F(ConnectionTest, AnotherObjectEndsTheWaitsForTheOneBefore)
{
    const auto proxy = Connect({{"abilityVersion", "3"}}, true);
    const OHOS::sptr<DriveIpcConnect> connect = new DriveIpcConnect(std::make_shared<ProxyLink>(proxy.get()));
    const OHOS::sptr<OHOS::IRemoteObject> first = new OHOS::IPCObjectStub;
    const OHOS::sptr<OHOS::IRemoteObject> second = new OHOS::IPCObjectStub;
    const OHOS::AppExecFwk::ElementName element;
    connect->OnAbilityConnectDone(element, first, 0);
    auto sent = SendAside(*proxy, "saveRecords");
    service_->WaitFor("saveRecords", 1);
    // Nobody tells of the death of the first any more, or it is heard of too late.
    connect->OnAbilityConnectDone(element, second, 0);
    connect->OnRemoteDied(first);
    EXPECT_TRUE(connect->IsConnected());
    EXPECT_EQ(sent.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    proxy->WakeAllRequests();
    EXPECT_EQ(sent.get().reply, "");
}

TEST_F(IpcConnectTest, AnObjectThatWasDeadWhenItCameIsDroppedByTheFirstRequest)
{
    ConnectTo(new OHOS::IPCObjectProxy(1));
    EXPECT_EQ(Send(), OHOS::ERR_DEAD_OBJECT);
    EXPECT_FALSE(connect_->IsConnected());
}

TEST_F(IpcConnectTest, TheDeathRecipientMayOutliveTheConnection)
{
    NubisTest::LogCapture log;
    OHOS::sptr<DriveIpcConnect> connect = new DriveIpcConnect(std::make_shared<ProxyLink>(nullptr));
    const OHOS::sptr<ServiceDeathRecipient> recipient = new ServiceDeathRecipient(connect);
    connect->OnAbilityConnectDone(element_, first_, 0);
    recipient->OnRemoteDied(first_);
    EXPECT_FALSE(connect->IsConnected());
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
    connect->OnAbilityConnectDone(element_, first_, 0);
    recipient->OnRemoteDied(nullptr);
    EXPECT_FALSE(connect->IsConnected());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("on remote died, remote is nullptr"));
    connect = nullptr;
    recipient->OnRemoteDied(first_);
}

TEST_F(IpcConnectTest, WaitingEndsWithTheConnectionOrItsTime)
{
    NubisTest::LogCapture log;
    auto waiting = std::async(std::launch::async, [this]() { connect_->WaitIpcConnect(); });
    ConnectTo(first_);
    waiting.get();
    EXPECT_THAT(log.TakeErrors(), IsEmpty());
    connect_->OnRemoteDied();
    connect_->WaitIpcConnect();
    EXPECT_THAT(log.TakeErrors(), ElementsAre("wait ipc connect failed, timeout"));

    connect_->ExpectConnect();
    ConnectTo(second_);
    connect_->OnRemoteDied();
    connect_->WaitIpcConnect();
    EXPECT_THAT(log.TakeErrors(), IsEmpty()) << "it came and was lost before the wait";
}
} // namespace
