// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/manual_clock.h"
#include "kit_fixture.h"
#include "log_capture.h"

namespace {
using namespace Nubis;
using std::chrono::seconds;
using testing::Contains;
using testing::ElementsAre;

constexpr seconds PERIOD(10);

class ProgressTest : public testing::Test {
protected:
    void Add(const std::string &taskId)
    {
        auto progress = std::make_shared<NBProgressMap>();
        (*progress)[taskId] = {};
        NBDatabase::AddProgressCallBack(
            taskId, [this](auto, std::shared_ptr<NBProgressMap> entries) { calls_.push_back(entries->begin()->first); },
            nullptr, std::move(progress));
    }

    std::vector<std::string> CallsOfOnePeriod()
    {
        calls_.clear();
        clock_.Advance(PERIOD);
        return calls_;
    }

    Host::ManualClock clock_;
    NubisTest::LogCapture log_;
    std::vector<std::string> calls_;
};

TEST_F(ProgressTest, EnabledTasksAreToldEveryTenSeconds)
{
    Add("b");
    Add("a");
    EXPECT_THAT(log_.Take(LOG_INFO), Contains("start process timer").Times(1));
    EXPECT_THAT(CallsOfOnePeriod(), ElementsAre());
    NBDatabase::EnableProgressCallBack("a");
    NBDatabase::EnableProgressCallBack("a");
    NBDatabase::EnableProgressCallBack("b");
    EXPECT_THAT(CallsOfOnePeriod(), ElementsAre("a", "b"));
    NBDatabase::DisableProgressCallBack("a");
    EXPECT_THAT(CallsOfOnePeriod(), ElementsAre("a", "b"));
    NBDatabase::DisableProgressCallBack("a");
    log_.Take(LOG_DEBUG);
    NBDatabase::DisableProgressCallBack("a");
    EXPECT_THAT(log_.Take(LOG_DEBUG), Contains("disable progress callback, taskid:a, count:0"));
    NBDatabase::EnableProgressCallBack("a");
    NBDatabase::DisableProgressCallBack("b");
    EXPECT_THAT(CallsOfOnePeriod(), ElementsAre("a"));
    NBDatabase::RemoveProgressCallBack("a");
    NBDatabase::RemoveProgressCallBack("b");
    NBDatabase::EnableProgressCallBack("a");
    NBDatabase::DisableProgressCallBack("b");
    EXPECT_THAT(log_.TakeErrors(), ElementsAre("enable progress callback failed, no callback taskid:a",
                                       "disable progress callback failed, no callback taskid:b"));
}

TEST_F(ProgressTest, TheTimerLivesAsLongAsThereAreTasks)
{
    // A running timer is not started once more.
    const auto startsAnew = [this]() {
        log_.Take(LOG_INFO);
        NBDatabase::StartProgressTimer();
        return !log_.Take(LOG_INFO).empty();
    };
    Add("a");
    EXPECT_FALSE(startsAnew());
    NBDatabase::RemoveProgressCallBack("a");
    EXPECT_TRUE(startsAnew());
    // Without a task it ends with its first tick.
    clock_.Advance(PERIOD);
    EXPECT_TRUE(startsAnew());
    NBDatabase::StopProgressTimer();
    EXPECT_TRUE(startsAnew());
    // Of all these timers one is left.
    Add("a");
    NBDatabase::EnableProgressCallBack("a");
    EXPECT_THAT(CallsOfOnePeriod(), ElementsAre("a"));
    NBDatabase::RemoveProgressCallBack("a");
}

TEST_F(ProgressTest, WhatACallbackHoldsMayEndWithACallOfTheRegistry)
{
    int ended = 0;
    const auto add = [&ended]() {
        const std::shared_ptr<void> held(nullptr, [&ended](void *) {
            NBDatabase::EnableProgressCallBack("unknown");
            ++ended;
        });
        NBDatabase::AddProgressCallBack(
            "a", [held](auto...) {}, nullptr, std::make_shared<NBProgressMap>());
    };
    add();
    add();
    EXPECT_EQ(ended, 1);
    NBDatabase::RemoveProgressCallBack("a");
    EXPECT_EQ(ended, 2);
}

class SaveProgressTest : public NubisTest::DatabaseTest {
protected:
    static bool IsTask(const std::string &taskId)
    {
        NubisTest::LogCapture log;
        NBDatabase::EnableProgressCallBack(taskId);
        return log.TakeErrors().empty();
    }
};

TEST_F(SaveProgressTest, ASaveIsATaskUntilItHasEnded)
{
    std::promise<void> gate;
    service_->AnswerBehind("saveRecords", gate);
    std::promise<bool> saved;
    EXPECT_EQ(database_->SaveRecords(
                  NubisTest::ContextOf("t", "p"), {Existing("r1")}, NB_SAVE_OVERWRITE,
                  [&saved](auto...) { saved.set_value(IsTask("pt")); }, [](auto...) {}),
        0);
    EXPECT_EQ(service_->WaitFor("saveRecords", 1)[0].request["taskId"], "pt");
    EXPECT_TRUE(IsTask("pt"));
    gate.set_value();
    EXPECT_FALSE(saved.get_future().get());

    std::promise<void> again;
    database_->SaveRecords(
        nullptr, {}, NB_SAVE_OVERWRITE, [&again](auto...) { again.set_value(); }, [](auto...) {});
    const std::string taskId = service_->WaitFor("saveRecords", 2)[1].request["taskId"].asString();
    EXPECT_THAT(taskId, testing::MatchesRegex("[0-9a-f]{32}"));
    again.get_future().get();

    SetRules();
    EXPECT_EQ(
        database_->SaveRecords(
            NubisTest::ContextOf("t", "p"), {NubisTest::Note("a")}, NB_SAVE_OVERWRITE, [](auto...) {}, [](auto...) {}),
        11);
    EXPECT_FALSE(IsTask("pt"));
}
} // namespace
