// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <chrono>
#include <limits>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ffrt_inner.h"
#include "host/manual_clock.h"

#include "ffrt_test_support.h"

namespace {
using std::chrono::milliseconds;
using std::chrono::seconds;

void AddTo(void *counter)
{
    static_cast<Counter *>(counter)->Add();
}

TEST(FfrtTimer, HandlesCountFromZeroAndMistakesGiveMinusOne)
{
    Host::ManualClock clock;
    Counter fired;
    EXPECT_EQ(ffrt_timer_start(ffrt_qos_default, 10, nullptr, nullptr, false), -1);
    for (const int qos : {6, -2}) {
        EXPECT_EQ(ffrt_timer_start(qos, 10, &fired, AddTo, false), -1);
    }
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, 0), -1);
    EXPECT_EQ(ffrt_timer_start(ffrt_qos_default, 10, &fired, AddTo, false), 0);
    EXPECT_EQ(ffrt_timer_start(ffrt_qos_default, 10, &fired, AddTo, true), 1);
    EXPECT_EQ(ffrt_timer_start(ffrt_qos_utility, std::numeric_limits<uint64_t>::max(), &fired, AddTo, true), 2);

    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, 3), -1);
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, -1), -1);
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_utility, 1), -1);
    clock.Advance(milliseconds(10));
    EXPECT_EQ(fired.Get(), 2);
    for (const int handle : {0, 1, 1}) {
        EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, handle), 0);
    }
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_utility, 2), 0);
    clock.Advance(seconds(10));
    EXPECT_EQ(fired.Get(), 2);
}

std::string g_log;

void Log(void *text)
{
    g_log += static_cast<const char *>(text);
}

TEST(FfrtTimer, FiresInOrderOfTimeThenOfStart)
{
    Host::ManualClock clock;
    char names[] = "l\0f\0s\0e";
    ffrt_timer_start(ffrt_qos_default, 30, names, Log, false);
    ffrt_timer_start(ffrt_qos_default, 10, names + 2, Log, false);
    ffrt_timer_start(ffrt_qos_default, 10, names + 4, Log, false);
    const auto repeating = ffrt_timer_start(ffrt_qos_default, 10, names + 6, Log, true);
    clock.Advance(milliseconds(9));
    EXPECT_EQ(g_log, "");
    clock.Advance(milliseconds(26));
    EXPECT_EQ(g_log, "fseele");
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, repeating), 0);
}

struct SlowTick {
    int running = 0;
    int most = 0;
    int count = 0;
    ffrt::mutex lock;

    static void Run(void *data)
    {
        auto *self = static_cast<SlowTick *>(data);
        std::unique_lock<ffrt::mutex> guard(self->lock);
        ++self->count;
        self->most = std::max(self->most, ++self->running);
        guard.unlock();
        EXPECT_NE(ffrt::this_task::get_id(), 0U);
        ffrt_usleep(4000);
        guard.lock();
        --self->running;
    }
};

// The period counts from the end of the callback, and timers of one QoS never overlap.
TEST(FfrtTimer, OneAfterAnotherWithinAQos)
{
    Host::ManualClock clock;
    SlowTick ticks;
    const auto one = ffrt_timer_start(ffrt_qos_default, 6, &ticks, SlowTick::Run, true);
    clock.Advance(milliseconds(99));
    EXPECT_EQ(ticks.count, 10);
    const auto two = ffrt_timer_start(ffrt_qos_default, 1, &ticks, SlowTick::Run, true);
    clock.Advance(seconds(1));
    EXPECT_EQ(ticks.most, 1);
    // The tick that runs can only end when time goes on.
    auto stopped = ffrt::submit_h([&]() {
        ffrt_timer_stop(ffrt_qos_default, one);
        ffrt_timer_stop(ffrt_qos_default, two);
    });
    clock.Advance(milliseconds(20));
    ffrt::wait({stopped});
    EXPECT_EQ(ticks.running, 0);

    SlowTick other;
    ffrt_timer_start(ffrt_qos_utility, 1, &other, SlowTick::Run, false);
    ffrt_timer_start(ffrt_qos_background, 1, &other, SlowTick::Run, false);
    clock.Advance(milliseconds(10));
    EXPECT_EQ(other.most, 2);
}

struct Held {
    Counter entered;
    Counter gate;
    std::atomic<bool> left{false};

    static void Run(void *data)
    {
        auto *self = static_cast<Held *>(data);
        self->entered.Add();
        self->gate.WaitFor(1);
        self->left = true;
    }
};

TEST(FfrtTimer, StopWaitsForTheRunningCallback)
{
    for (const bool repeat : {false, true}) {
        // Between the opening of the gate and the stops no further period can pass.
        Host::ManualClock clock(milliseconds(1));
        Held held;
        const auto timer = ffrt_timer_start(ffrt_qos_default, 1, &held, Held::Run, repeat);
        clock.Advance(milliseconds(1));
        ASSERT_TRUE(held.entered.WaitFor(1));
        Counter stopping;
        std::atomic<int> early{0};
        for (int i = 0; i < 3; ++i) {
            ffrt::submit([&]() {
                stopping.Add();
                EXPECT_EQ(ffrt_timer_stop(ffrt_qos_default, timer), 0);
                early += held.left ? 0 : 1;
            });
        }
        ASSERT_TRUE(stopping.WaitFor(3));
        held.gate.Add();
        ffrt::wait();
        EXPECT_EQ(early, 0);
        clock.Advance(seconds(1));
        EXPECT_EQ(held.entered.Get(), 1);
    }
}

struct StoppingInside {
    std::atomic<ffrt_timer_t> timer{-1};
    Counter entered;
    Counter returned;

    static void Run(void *data)
    {
        auto *self = static_cast<StoppingInside *>(data);
        self->entered.Add();
        ffrt_timer_stop(ffrt_qos_deadline_request, self->timer);
        self->returned.Add();
    }
};

// As on the platform: who stops a timer inside its own callback waits for himself, and the QoS stands still.
TEST(FfrtTimer, StopInsideTheCallbackNeverReturns)
{
    Host::ManualClock clock(GENEROUS);
    constexpr auto lost = ffrt_qos_deadline_request; // left alone by the other tests
    // Never freed, for the callback never ends.
    static auto *state = new StoppingInside;
    static auto *later = new Counter;
    state->timer = ffrt_timer_start(lost, 10, state, StoppingInside::Run, true);
    ffrt_timer_start(lost, 20, later, AddTo, false);
    clock.Advance(seconds(10));
    EXPECT_EQ(state->entered.Get(), 1);
    EXPECT_EQ(state->returned.Get(), 0);
    EXPECT_EQ(later->Get(), 0);
}

TEST(FfrtTimer, RepeatsOnTheRealClock)
{
    Counter ticks;
    const auto timer = ffrt_timer_start(ffrt_qos_user_interactive, 1, &ticks, AddTo, true);
    EXPECT_TRUE(ticks.WaitFor(20));
    EXPECT_EQ(ffrt_timer_stop(ffrt_qos_user_interactive, timer), 0);
    Counter instant;
    ffrt_timer_start(ffrt_qos_default, 0, &instant, AddTo, false);
    EXPECT_TRUE(instant.WaitFor(1));
}
} // namespace
