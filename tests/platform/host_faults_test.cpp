// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "errors.h"
#include "host/ability_registry.h"
#include "host/faults.h"
#include "ipc_test_support.h"

using namespace IpcTest;
using Host::Fault;
using Host::FaultPlan;
using Host::FaultScope;
using OHOS::IRemoteObject;
using OHOS::MessageParcel;
using OHOS::sptr;

namespace {

constexpr int FAILED_REPLY = 29201;
constexpr int DEAD_REPLY = 29189;
constexpr uint32_t ALWAYS = 1000;

sptr<IRemoteObject> Fresh(const sptr<TestAbility> &stub = new TestAbility())
{
    Host::AbilityRegistry::Kill(BUNDLE, ABILITY, 100);
    Host::AbilityRegistry::Offer(BUNDLE, ABILITY, 100, stub);
    sptr<TestConnection> connection = new TestConnection();
    EXPECT_EQ(Connect(connection, BUNDLE), 0);
    return connection->AwaitAbility();
}

struct Outcome {
    std::vector<Fault> faults;
    std::vector<int> results;
    std::vector<std::string> replies;
};

Outcome Play(const FaultPlan &plan, int requests)
{
    Outcome outcome;
    FaultScope scope(plan);
    sptr<IRemoteObject> ability = Fresh();
    for (int i = 0; i < requests; ++i) {
        if (ability->IsObjectDead()) {
            ability = Fresh();
        }
        MessageParcel reply;
        const auto write = [i](MessageParcel &data) { data.WriteInterfaceToken(u"token") && data.WriteInt32(i); };
        outcome.results.push_back(Call(ability, ECHO, write, reply));
        const uint8_t *bytes = reply.ReadUnpadBuffer(reply.GetDataSize());
        outcome.replies.emplace_back(bytes, bytes + reply.GetDataSize());
    }
    outcome.faults = scope.History();
    return outcome;
}

} // namespace

TEST(HostFaultsTest, OneSeedIsOneSequence)
{
    FaultPlan plan;
    plan.delay = 20;
    plan.sendFailure = plan.lostReply = plan.cutReply = plan.garbledReply = 100;
    plan.deathBefore = plan.deathDuring = plan.deathAfter = 30;
    plan.maxDelay = std::chrono::milliseconds(2);
    plan.onlyCode = ECHO;
    plan.seed = 42;
    Outcome first = Play(plan, 150);
    Outcome second = Play(plan, 150);
    EXPECT_TRUE(first.faults == second.faults);
    EXPECT_TRUE(first.results == second.results);
    EXPECT_TRUE(first.replies == second.replies);
    EXPECT_THAT(first.faults, testing::IsSupersetOf({Fault::NONE, Fault::SEND_FAILURE, Fault::LOST_REPLY,
                                  Fault::CUT_REPLY, Fault::GARBLED_REPLY}));
    plan.seed = 43;
    EXPECT_NE(Play(plan, 150).faults, first.faults);
}

TEST(HostFaultsTest, EachFaultDoesWhatItSays)
{
    struct {
        uint32_t FaultPlan::*share;
        int result;
        bool handled;
        bool dead;
    } const cases[] = {
        {&FaultPlan::delay, 0, true, false},
        {&FaultPlan::sendFailure, FAILED_REPLY, false, false},
        {&FaultPlan::lostReply, FAILED_REPLY, true, false},
        {&FaultPlan::deathBefore, DEAD_REPLY, false, true},
        {&FaultPlan::deathAfter, 0, true, true},
    };
    for (const auto &item : cases) {
        sptr<TestAbility> stub = new TestAbility();
        sptr<IRemoteObject> ability = Fresh(stub);
        {
            FaultPlan plan;
            plan.*item.share = ALWAYS;
            FaultScope scope(plan);
            const auto write = [&](MessageParcel &data) { data.WriteString("kept") && data.WriteRemoteObject(stub); };
            EXPECT_EQ(Call(ability, KEEP, write), item.result);
            EXPECT_EQ(scope.History().size(), 1U);
        }
        EXPECT_EQ(Give(stub, "kept") != nullptr, item.handled);
        EXPECT_EQ(Call(ability, RESULT) == OHOS::ERR_DEAD_OBJECT, item.dead);
    }
}
