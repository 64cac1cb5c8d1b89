// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ffrt_inner.h"
#include "host/manual_clock.h"

#include "ffrt_test_support.h"

namespace {
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

template <typename Mutex>
void CountTogether()
{
    constexpr int tasks = 8;
    constexpr int rounds = 2000;
    Mutex lock;
    int64_t sum = 0;
    const auto count = [&]() {
        for (int round = 0; round < rounds; ++round) {
            std::lock_guard<Mutex> guard(lock);
            ++sum;
        }
    };
    for (int i = 0; i < tasks; ++i) {
        ffrt::submit(count);
    }
    count();
    ffrt::wait();
    EXPECT_EQ(sum, (tasks + 1) * rounds);
}

TEST(FfrtMutex, ExcludesTasksAndThreads)
{
    CountTogether<ffrt::mutex>();
    CountTogether<ffrt::recursive_mutex>();
}

TEST(FfrtMutex, MayBeHeldOverAWaitAndDestroyedByItsLastOwner)
{
    Host::ManualClock clock(GENEROUS);
    auto lock = std::make_unique<ffrt::mutex>();
    EXPECT_TRUE(lock->try_lock());
    Counter got;
    ffrt::submit([&]() {
        lock->lock();
        got.Add();
        ffrt_usleep(1000);
        lock->unlock();
        lock.reset();
    });
    clock.Advance(seconds(1));
    EXPECT_EQ(got.Get(), 0);
    lock->unlock();
    clock.Advance(seconds(1));
    EXPECT_EQ(got.Get(), 1);
    EXPECT_EQ(lock, nullptr);
}

TEST(FfrtMutex, RecursiveOneBelongsToItsOwner)
{
    ffrt::recursive_mutex lock;
    const auto othersGetIt = [&lock]() {
        bool got = false;
        ffrt::thread([&]() { got = std::unique_lock(lock, std::try_to_lock).owns_lock(); }).join();
        return got;
    };
    lock.lock();
    EXPECT_TRUE(lock.try_lock());
    EXPECT_FALSE(othersGetIt());
    lock.unlock();
    EXPECT_FALSE(othersGetIt());
    lock.unlock();
    EXPECT_TRUE(othersGetIt());
}

TEST(FfrtCondition, HandsEveryItemToOneConsumer)
{
    constexpr int items = 3000;
    constexpr int consumers = 4;
    ffrt::mutex lock;
    ffrt::condition_variable changed;
    int available = 0;
    int taken = 0;
    // One item more for each consumer ends it.
    for (int i = 0; i < consumers; ++i) {
        ffrt::submit([&]() {
            std::unique_lock<ffrt::mutex> guard(lock);
            for (bool isLast = false; !isLast; isLast = taken > items) {
                EXPECT_TRUE(changed.wait_for(guard, hours(1), [&]() { return available > 0; }));
                --available;
                ++taken;
            }
        });
    }
    for (int i = 0; i < items + consumers; ++i) {
        std::lock_guard<ffrt::mutex> guard(lock);
        ++available;
        changed.notify_one();
    }
    ffrt::wait();
    EXPECT_EQ(taken, items + consumers);
}

TEST(FfrtCondition, WithoutTimeLeftItDoesNotWait)
{
    // With the clock standing still, whatever waits would wait for ever.
    Host::ManualClock clock;
    ffrt::mutex lock;
    ffrt::condition_variable never;
    std::unique_lock<ffrt::mutex> guard(lock);
    for (const double length : {0.0, -5.0, -1e300}) {
        EXPECT_EQ(never.wait_for(guard, std::chrono::duration<double>(length)), ffrt::cv_status::timeout);
    }
    EXPECT_FALSE(never.wait_for(guard, seconds(-5), []() { return false; }));
    EXPECT_TRUE(never.wait_for(guard, seconds(0), []() { return true; }));
    const auto past = std::chrono::system_clock::now() - seconds(1);
    EXPECT_EQ(never.wait_until(guard, past), ffrt::cv_status::timeout);
    EXPECT_FALSE(never.wait_until(guard, past, []() { return false; }));
    constexpr auto longPast = std::chrono::steady_clock::time_point::min();
    EXPECT_EQ(never.wait_until(guard, longPast), ffrt::cv_status::timeout);
    EXPECT_TRUE(guard.owns_lock());
}

TEST(FfrtCondition, EveryWaitHoweverShortGivesOthersTheirTurn)
{
    ffrt::mutex lock;
    ffrt::condition_variable never;
    bool set = false;
    std::unique_lock<ffrt::mutex> guard(lock);
    ffrt::submit([&]() {
        std::lock_guard<ffrt::mutex> otherGuard(lock);
        set = true;
    });
    const auto end = std::chrono::steady_clock::now() + GENEROUS;
    while (!set && std::chrono::steady_clock::now() < end) {
        never.wait_for(guard, std::chrono::nanoseconds(1));
    }
    EXPECT_TRUE(set);
    guard.unlock();
    ffrt::wait();
}

TEST(FfrtCondition, RealTimeRunsOutButNotTheLongest)
{
    ffrt::mutex lock;
    ffrt::condition_variable changed;
    bool set = false;
    std::unique_lock<ffrt::mutex> guard(lock);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(changed.wait_for(guard, milliseconds(20), []() { return false; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(20));
    auto setter = ffrt::submit_h([&]() {
        std::lock_guard<ffrt::mutex> other(lock);
        set = true;
        changed.notify_all();
    });
    EXPECT_TRUE(changed.wait_for(guard, hours::max(), [&set]() { return set; }));
    guard.unlock();
    ffrt::wait({setter});
}

TEST(FfrtPromise, SettingAgainReplacesTheValue)
{
    ffrt::promise<std::string> promise;
    auto first = promise.get_future();
    auto second = promise.get_future();
    EXPECT_EQ(first.wait_for(seconds(0)), ffrt::future_status::timeout);
    promise.set_value("one");
    promise.set_value(std::string("two"));
    auto moved = std::move(first);
    EXPECT_FALSE(first.valid());
    EXPECT_EQ(moved.get(), "two");
    EXPECT_FALSE(moved.valid());
    // One state for all: ready stays ready, and the value may be set anew.
    EXPECT_EQ(second.wait_for(seconds(0)), ffrt::future_status::ready);
    promise.set_value("three");
    EXPECT_EQ(second.get(), "three");
}

TEST(FfrtPromise, WakesEveryWaiterAndCarriesMoveOnlyValues)
{
    ffrt::promise<std::unique_ptr<int>> promise;
    Counter ready;
    for (int i = 0; i < 10; ++i) {
        ffrt::submit(
            [&ready, future = std::make_shared<ffrt::future<std::unique_ptr<int>>>(promise.get_future()), i]() {
                if (i % 2 == 0) {
                    future->wait();
                }
                EXPECT_EQ(future->wait_for(GENEROUS), ffrt::future_status::ready);
                ready.Add();
            });
    }
    ffrt::promise<std::unique_ptr<int>> owner = std::move(promise);
    owner.set_value(std::make_unique<int>(7));
    ffrt::wait();
    EXPECT_EQ(ready.Get(), 10);
    EXPECT_EQ(*owner.get_future().get(), 7);
}
} // namespace
