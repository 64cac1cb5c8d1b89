// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "errors.h"
#include "host/ability_control.h"
#include "host/ability_registry.h"
#include "ipc_object_proxy.h"
#include "ipc_test_support.h"
#include "service_connector.h"
#include "wire_session.h"

using namespace IpcTest;
using OHOS::IRemoteObject;
using OHOS::MessageParcel;
using OHOS::sptr;

namespace {

constexpr int DEAD_REPLY = 29189;

// What holds when the process of an ability dies.
class IpcDeathTest : public PlacesTest {
protected:
    void KillAbility()
    {
        if (GetParam() == Place::THIS_PROCESS) {
            EXPECT_TRUE(Host::AbilityRegistry::Kill(BUNDLE, ABILITY, 100));
            return;
        }
        auto status = Host::FindAbility(BUNDLE, ABILITY, 100);
        ASSERT_TRUE(status.running);
        ASSERT_EQ(kill(status.pid, SIGKILL), 0);
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Places, IpcDeathTest, testing::Values(Place::THIS_PROCESS, Place::OTHER_PROCESS), NameOf);

TEST_P(IpcDeathTest, IdleDeathIsToldOnceToEveryone)
{
    sptr<IRemoteObject> second = Make(ability_);
    sptr<TestRecipient> twice = new TestRecipient();
    sptr<TestRecipient> other = new TestRecipient();
    sptr<TestRecipient> removed = new TestRecipient();
    sptr<TestRecipient> ofSecond = new TestRecipient();
    std::atomic<bool> removedInside{true};
    std::atomic<bool> addedInside{true};
    std::atomic<bool> deadInside{false};
    other->inside = [&](const OHOS::wptr<IRemoteObject> &object) {
        sptr<IRemoteObject> died = object.promote();
        removedInside = died->RemoveDeathRecipient(other);
        addedInside = died->AddDeathRecipient(other);
        deadInside = died == ability_ && died->IsObjectDead();
    };
    EXPECT_FALSE(ability_->AddDeathRecipient(nullptr));
    for (const auto &recipient : {twice, twice, other, removed}) {
        EXPECT_TRUE(ability_->AddDeathRecipient(recipient));
    }
    EXPECT_TRUE(second->AddDeathRecipient(ofSecond));
    EXPECT_TRUE(ability_->RemoveDeathRecipient(removed));
    EXPECT_FALSE(ability_->RemoveDeathRecipient(removed));
    EXPECT_FALSE(ability_->IsObjectDead());

    KillAbility();
    EXPECT_EQ(twice->AwaitDeaths(2), 2U);
    EXPECT_EQ(other->AwaitDeaths(), 1U);
    EXPECT_EQ(ofSecond->AwaitDeaths(), 1U);
    EXPECT_THAT(connection_->AwaitDisconnects(), testing::ElementsAre(-1));
    EXPECT_FALSE(removedInside);
    EXPECT_FALSE(addedInside);
    EXPECT_TRUE(deadInside);
    EXPECT_EQ(Call(ability_, RESULT), OHOS::ERR_DEAD_OBJECT);
    EXPECT_EQ(Call(second, RESULT), OHOS::ERR_DEAD_OBJECT);
    EXPECT_FALSE(ability_->AddDeathRecipient(removed));

    // Nothing of the old life disturbs the new one.
    auto oldConnection = connection_;
    auto oldAbility = ability_;
    Offer();
    ConnectAgain();
    EXPECT_NE(ability_, oldAbility);
    EXPECT_EQ(Call(ability_, RESULT), 0);
    EXPECT_EQ(twice->AwaitDeaths(2), 2U);
    EXPECT_EQ(oldConnection->AwaitDisconnects().size(), 1U);
}

TEST_P(IpcDeathTest, ConnectingAgainAtOnceFindsALivingAbility)
{
    sptr<IRemoteObject> died = ability_;
    KillAbility();
    Offer();
    EXPECT_TRUE(Await([&] { return died->IsObjectDead(); }));
    // The same connection object, whether or not it has heard of the death.
    ASSERT_EQ(Connect(connection_, BUNDLE), 0);
    ability_ = connection_->AwaitAbility(2);
    EXPECT_NE(ability_, died);
    EXPECT_EQ(Call(ability_, RESULT), 0);
    EXPECT_THAT(connection_->Heard(), testing::ElementsAre("connected", "disconnected -1", "connected"));
}

TEST_P(IpcDeathTest, CallsUnderWayFail)
{
    constexpr int callers = 6;
    std::vector<std::thread> threads;
    std::vector<int> results(callers, 0);
    std::vector<uint8_t> block(100000);
    for (int i = 0; i < callers; ++i) {
        threads.emplace_back([&, i] {
            results[i] = Call(ability_, BLOCK, [&](MessageParcel &data) {
                data.WriteString("never");
                if (i % 2 == 1) {
                    data.WriteRawData(block.data(), block.size());
                }
            });
        });
    }
    EXPECT_EQ(Call(ability_, AWAIT_BLOCKED, [](MessageParcel &data) { data.WriteInt32(callers); }), 0);
    KillAbility();
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_THAT(results, testing::Each(DEAD_REPLY));
    EXPECT_THAT(connection_->AwaitDisconnects(), testing::ElementsAre(-1));
    EXPECT_EQ(Call(ability_, RESULT), OHOS::ERR_DEAD_OBJECT);
}

TEST_P(IpcDeathTest, DeathReleasesWhatTheDeadHeld)
{
    sptr<IRemoteObject> object = new TestAbility();
    OHOS::wptr<IRemoteObject> weak = object;
    Keep(ability_, "name", object);
    object = nullptr;
    KillAbility();
    EXPECT_TRUE(Await([&] { return weak.promote() == nullptr; }));
}

TEST(IpcProcessDeathTest, DeathWithinTheHandlerFailsTheCall)
{
    TestHost::Get().OfferService(BUNDLE);
    sptr<TestConnection> connection = new TestConnection();
    ASSERT_EQ(Connect(connection, BUNDLE), 0);
    sptr<IRemoteObject> ability = connection->AwaitAbility();
    EXPECT_EQ(Call(ability, DIE), DEAD_REPLY);
    EXPECT_EQ(Call(ability, RESULT), OHOS::ERR_DEAD_OBJECT);
    EXPECT_THAT(connection->AwaitDisconnects(), testing::ElementsAre(-1));
}

TEST(IpcProcessDeathTest, OneBrokenLaneEndsTheSession)
{
    TestHost::Get().OfferService(BUNDLE);
    for (auto kind : {Host::Ipc::LaneKind::SMALL, Host::Ipc::LaneKind::BIG}) {
        Host::AbilityLink link;
        std::string error;
        ASSERT_EQ(Host::ConnectToService(BUNDLE, ABILITY, 100, link, error), 0) << error;
        sptr<TestRecipient> recipient = new TestRecipient();
        EXPECT_TRUE(link.ability->AddDeathRecipient(recipient));
        std::static_pointer_cast<Host::Ipc::WireSession>(link.session)->AwaitLane(kind)->Close();
        EXPECT_EQ(recipient->AwaitDeaths(), 1U);
        EXPECT_EQ(Call(link.ability, RESULT), OHOS::ERR_DEAD_OBJECT);
    }
}

TEST(IpcProcessDeathTest, StubsAndHandMadeProxiesKnowNoDeath)
{
    sptr<IRemoteObject> stub = new TestAbility();
    sptr<TestRecipient> recipient = new TestRecipient();
    EXPECT_FALSE(stub->IsProxyObject());
    EXPECT_FALSE(stub->AddDeathRecipient(recipient));
    EXPECT_FALSE(stub->RemoveDeathRecipient(recipient));
    sptr<IRemoteObject> proxy = new OHOS::IPCObjectProxy(3, u"some");
    EXPECT_TRUE(proxy->IsProxyObject());
    EXPECT_FALSE(proxy->AddDeathRecipient(recipient));
    EXPECT_EQ(Call(proxy, RESULT), OHOS::ERR_DEAD_OBJECT);
}
