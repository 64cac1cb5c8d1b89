// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "ffrt_inner.h"
#include "host/manual_clock.h"

#include "ffrt_test_support.h"

namespace {
using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(ManualClock, TimedWaitsEndAtTheirMoment)
{
    Host::ManualClock clock;
    ffrt::mutex lock;
    ffrt::condition_variable changed;
    ffrt::promise<int> promise;
    std::vector<seconds> ends;
    const auto start = clock.Now();
    const auto log = [&]() { ends.push_back(std::chrono::duration_cast<seconds>(clock.Now() - start)); };
    ffrt::submit([&]() {
        std::unique_lock<ffrt::mutex> guard(lock);
        EXPECT_FALSE(changed.wait_for(guard, seconds(180), []() { return false; }));
        log();
        EXPECT_EQ(changed.wait_for(guard, hours(24)), ffrt::cv_status::timeout);
        log();
        EXPECT_EQ(promise.get_future().wait_for(seconds(1)), ffrt::future_status::timeout);
        log();
    });
    // Being notified without cause takes no time away.
    for (int i = 0; i < 3; ++i) {
        clock.Advance(seconds(10));
        changed.notify_all();
    }
    clock.Advance(hours(48));
    EXPECT_EQ(ends, (std::vector<seconds>{seconds(180), seconds(86580), seconds(86581)}));
    EXPECT_EQ(clock.Now() - start, seconds(30) + hours(48));
    ffrt::wait();
}

TEST(ManualClock, WaitUntilTakesWhatIsLeftOnTheOtherClock)
{
    Host::ManualClock clock;
    ffrt::mutex lock;
    ffrt::condition_variable never;
    Counter ended;
    ffrt::submit([&]() {
        std::unique_lock<ffrt::mutex> guard(lock);
        EXPECT_FALSE(never.wait_until(guard, std::chrono::system_clock::now() + hours(1), []() { return false; }));
        ended.Add();
    });
    // The real time that passes until the wait begins is not known here, but it is less than this.
    clock.Advance(hours(1) - GENEROUS);
    EXPECT_EQ(ended.Get(), 0);
    clock.Advance(GENEROUS);
    EXPECT_EQ(ended.Get(), 1);
}

TEST(ManualClock, DelayedTasksStartWhenDue)
{
    Host::ManualClock clock;
    Counter ran;
    ffrt::task_handle first = ffrt::submit_h([&ran]() { ran.Add(); }, ffrt::task_attr().delay(1000));
    ffrt::submit_h([&ran]() { ran.Add(); }, {first}, {}, ffrt::task_attr().delay(500));
    clock.Advance(microseconds(999));
    EXPECT_EQ(ran.Get(), 0);
    clock.Advance(microseconds(1));
    EXPECT_EQ(ran.Get(), 2);
}

// All of them wake in one moment, and whatever they start and hand on to each other belongs to it.
TEST(ManualClock, ManyWaitersAtOneInstant)
{
    constexpr int sleepers = 300;
    Host::ManualClock clock(GENEROUS);
    ffrt::mutex lock;
    int sum = 0;
    for (int i = 0; i < sleepers; ++i) {
        ffrt::submit([&]() {
            ffrt::this_task::sleep_for(hours(1));
            ffrt::submit([&]() {
                auto promise = std::make_shared<ffrt::promise<int>>();
                ffrt::thread([promise]() { promise->set_value(1); }).detach();
                const int one = promise->get_future().get();
                std::lock_guard<ffrt::mutex> guard(lock);
                sum += one;
            });
        });
    }
    clock.Advance(hours(1));
    EXPECT_EQ(sum, sleepers);
}

// Every sleeper wakes at exactly the sums of its sleeps, and nobody sees time go back.
RC_GTEST_PROP(ManualClock, SleepersSeeExactTimes, ())
{
    const auto plans = *rc::gen::container<std::vector<std::vector<int>>>(
        rc::gen::container<std::vector<int>>(rc::gen::inRange(1, 50)));
    const auto steps = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 200));
    Host::ManualClock clock;
    const auto start = clock.Now();
    const auto nowMs = [&]() { return std::chrono::duration_cast<milliseconds>(clock.Now() - start).count(); };
    std::atomic<int> wrong{0};
    std::atomic<std::size_t> wakes{0};
    for (const auto &plan : plans) {
        ffrt::submit([&wrong, &wakes, &nowMs, plan]() {
            int64_t expected = 0;
            for (int length : plan) {
                ffrt::this_task::sleep_for(milliseconds(length));
                expected += length;
                wrong += nowMs() == expected ? 0 : 1;
                ++wakes;
            }
        });
    }
    for (int step : steps) {
        clock.Advance(milliseconds(step));
        std::size_t due = 0;
        for (const auto &plan : plans) {
            int64_t at = 0;
            for (int length : plan) {
                at += length;
                due += at <= nowMs() ? 1 : 0;
            }
        }
        RC_ASSERT(wakes == due);
    }
    clock.Advance(hours(1));
    ffrt::wait();
    RC_ASSERT(wrong == 0);
}

TEST(ManualClock, TasksBlockedElsewhereAreLeftBehind)
{
    Host::ManualClock clock(milliseconds(30));
    Counter gate;
    Counter ticks;
    ffrt::submit([&]() {
        gate.WaitFor(1);
        ticks.Add();
        ffrt::this_task::sleep_for(seconds(1));
        ticks.Add();
    });
    clock.Advance(seconds(10));
    EXPECT_EQ(ticks.Get(), 0);
    gate.Add();
    EXPECT_TRUE(clock.WaitForPending(1, GENEROUS));
    clock.Advance(seconds(1));
    EXPECT_EQ(ticks.Get(), 2);
}

TEST(ManualClock, TasksMayMoveIt)
{
    Host::ManualClock clock(GENEROUS);
    const auto start = clock.Now();
    // Gives every move many steps, between which the others must wait.
    ffrt::submit([]() {
        for (int i = 0; i < 40; ++i) {
            ffrt::this_task::sleep_for(seconds(1));
        }
    });
    for (int i = 0; i < 5; ++i) {
        ffrt::submit([&clock]() { clock.Advance(seconds(10)); });
    }
    ffrt::wait();
    EXPECT_EQ(clock.Now() - start, seconds(50));
}

TEST(ManualClock, PendingWaitsOutliveItsComingAndGoing)
{
    Counter woken;
    const auto sleep = [&woken](hours length) {
        ffrt::submit([&woken, length]() {
            ffrt::this_task::sleep_for(length);
            woken.Add();
        });
    };
    sleep(hours(1));
    sleep(hours(2));
    {
        Host::ManualClock clock;
        EXPECT_TRUE(clock.WaitForPending(2, GENEROUS));
        // A thread from elsewhere may wait as well.
        std::thread thread([]() { ffrt_usleep(5000000); });
        EXPECT_TRUE(clock.WaitForPending(3, GENEROUS));
        clock.Advance(hours(1));
        thread.join();
        EXPECT_EQ(woken.Get(), 1);
        EXPECT_FALSE(clock.WaitForPending(2, milliseconds(0)));
        sleep(hours(10));
        clock.Advance(hours(1) - milliseconds(20));
    }
    // The second one has no more than 20 ms left, now of real time.
    EXPECT_TRUE(woken.WaitFor(2));
    const auto before = Host::MonotonicNow();
    Host::ManualClock next;
    EXPECT_GE(next.Now(), before);
    next.Advance(hours(9) + milliseconds(20));
    EXPECT_EQ(woken.Get(), 3);
    ffrt::wait();
}

TEST(ManualClockDeathTest, ThereIsOnlyOne)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    Host::ManualClock clock;
    EXPECT_DEATH(Host::ManualClock second, "there is one already");
}
} // namespace
