// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "ffrt_inner.h"

#include "ffrt_test_support.h"

namespace {
static_assert(!std::is_copy_constructible_v<ffrt::task_handle> && !std::is_copy_assignable_v<ffrt::task_handle>);
static_assert(!std::is_copy_constructible_v<ffrt::thread> && !std::is_copy_assignable_v<ffrt::thread>);
static_assert(!std::is_copy_constructible_v<ffrt::task_attr>);

std::string NameOfThread()
{
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return name;
}

std::string StartTimeTask()
{
    std::string name;
    ffrt::wait({ffrt::submit_h([&name]() { name = NameOfThread(); })});
    return name;
}

TEST(FfrtTask, BearsItsNameWhileItRuns)
{
    EXPECT_EQ(StartTimeTask(), "StartTimeTask");
    std::string name;
    const auto tell = [&name]() { name = NameOfThread(); };
    ffrt::wait({ffrt::submit_h(tell, {}, {}, ffrt::task_attr().name("a name that is too long"))});
    EXPECT_EQ(name, "a name that is ");
    ffrt::thread(tell).join();
    EXPECT_EQ(name, "thread");
    ffrt::thread("writer", static_cast<ffrt::qos>(ffrt::qos_utility), tell).join();
    EXPECT_EQ(name, "writer");
}

TEST(FfrtTask, AttributesKeepWhatTheyAreGiven)
{
    ffrt::task_attr attr;
    EXPECT_EQ(attr.qos(ffrt_qos_deadline_request).qos(), ffrt_qos_deadline_request);
    EXPECT_EQ(attr.qos(77).qos(), ffrt_qos_default);
    EXPECT_STREQ(attr.name(nullptr).name(), "");

    EXPECT_EQ(ffrt::this_task::get_id(), 0U);
    EXPECT_EQ(ffrt::this_task::update_qos(ffrt_qos_default), ffrt_error);
    uint64_t inside = 0;
    auto handle = ffrt::submit_h([&inside]() {
        inside = ffrt::this_task::get_id();
        EXPECT_EQ(ffrt::this_task::update_qos(ffrt_qos_background), 0);
        EXPECT_EQ(ffrt::this_task::update_qos(6), ffrt_error_inval);
    });
    ffrt::wait({handle});
    EXPECT_EQ(handle.get_id(), inside);
    EXPECT_GT(inside, 0U);
}

// Blocked tasks must never keep others from running, whether they wait inside FFRT or elsewhere.
TEST(FfrtPool, GrowsWhileAllAreBlocked)
{
    constexpr int blocked = 150;
    Counter nested;
    Counter finished;
    Counter gate;
    ffrt::mutex lock;
    ffrt::condition_variable changed;
    bool open = false;
    for (int i = 0; i < blocked; ++i) {
        ffrt::submit([&, i]() {
            ffrt::submit([&nested]() { nested.Add(); });
            if (i % 2 == 0) {
                gate.WaitFor(1);
            } else {
                std::unique_lock<ffrt::mutex> guard(lock);
                changed.wait(guard, [&open]() { return open; });
            }
            finished.Add();
        });
    }
    EXPECT_TRUE(nested.WaitFor(blocked));
    EXPECT_EQ(finished.Get(), 0);
    gate.Add();
    {
        std::lock_guard<ffrt::mutex> guard(lock);
        open = true;
        changed.notify_all();
    }
    ffrt::wait();
    EXPECT_EQ(finished.Get(), blocked);
}

TEST(FfrtPool, ReusesItsThreads)
{
    std::set<std::thread::id> threads;
    for (int i = 0; i < 1000; ++i) {
        ffrt::wait({ffrt::submit_h([&threads]() { threads.insert(std::this_thread::get_id()); })});
    }
    EXPECT_EQ(threads.size(), 1U);
}

__attribute__((noinline)) int UseStack()
{
    volatile char large[12 << 20];
    for (std::size_t i = 0; i < sizeof(large); i += 4096) {
        large[i] = 1;
    }
    return large[4096];
}

TEST(FfrtPool, GivesATaskTheStackThatItAsksFor)
{
    int result = 0;
    ffrt::wait({ffrt::submit_h([&result]() { result = UseStack(); }, ffrt::task_attr().stack_size(32 << 20))});
    EXPECT_EQ(result, 1);
}

struct LateSubmitter {
    Counter *submitted;
    Counter *waited;
    ~LateSubmitter()
    {
        ffrt::submit([counter = submitted]() { counter->Add(); });
        ffrt::wait();
        ffrt_usleep(1);
        waited->Add();
    }
};

TEST(FfrtPool, ThreadLocalObjectsMayUseFfrtAtTheirEnd)
{
    Counter submitted;
    Counter waited;
    // A thread with a stack of its own size serves one task only, so that it ends now.
    ffrt::submit(
        [&]() {
            static thread_local LateSubmitter late{&submitted, &waited};
        },
        ffrt::task_attr().stack_size(32 << 20));
    EXPECT_TRUE(waited.WaitFor(1));
    EXPECT_EQ(submitted.Get(), 1);
}

TEST(FfrtTask, LivesWithoutItsHandleAndLeavesNothingBehind)
{
    auto held = std::make_shared<int>(1);
    std::weak_ptr<int> watch = held;
    ffrt::wait({ffrt::submit_h([held = std::move(held)]() {})});
    EXPECT_TRUE(watch.expired());
    ffrt::wait({ffrt::submit_h(std::function<void()>())});

    Counter gate;
    Counter ran;
    auto handle = ffrt::submit_h([&]() {
        gate.WaitFor(1);
        ran.Add();
    });
    ffrt::task_handle moved = std::move(handle);
    EXPECT_EQ(static_cast<void *>(handle), nullptr);
    moved = nullptr;
    gate.Add();
    EXPECT_TRUE(ran.WaitFor(1));
    ffrt::wait();
}

TEST(FfrtTask, WaitCoversOwnChildrenOnly)
{
    Counter gate;
    Counter outer;
    ffrt::submit([&]() { gate.WaitFor(1); });
    ffrt::wait({ffrt::submit_h([&]() {
        for (int i = 0; i < 10; ++i) {
            ffrt::submit([&outer]() { outer.Add(); });
        }
        // Would never return if it counted the task of the test.
        ffrt::wait();
        EXPECT_EQ(outer.Get(), 10);
    })});
    gate.Add();
    ffrt::wait();
}

// Whatever the graph, a task starts after all it depends on, and every one runs.
RC_GTEST_PROP(FfrtTask, StartsAfterAllOfItsDependences, ())
{
    const auto size = *rc::gen::inRange<std::size_t>(1, 40);
    std::vector<ffrt::task_handle> handles;
    handles.push_back(ffrt::submit_h([]() {}));
    std::vector<std::atomic<bool>> ended(size + 1);
    ended[0] = true;
    std::atomic<int> early{0};
    for (std::size_t i = 1; i <= size; ++i) {
        const auto one = *rc::gen::inRange<std::size_t>(0, i);
        const auto other = *rc::gen::inRange<std::size_t>(0, i);
        auto body = [i, one, other, &ended, &early]() {
            early += ended[one] && ended[other] ? 0 : 1;
            ended[i] = true;
        };
        // One dependence may be named twice, and may have ended already.
        handles.push_back(ffrt::submit_h(body, {handles[one], handles[other]}, {}));
    }
    for (auto &handle : handles) {
        ffrt::wait({handle});
    }
    RC_ASSERT(early == 0);
    RC_ASSERT(std::all_of(ended.begin(), ended.end(), [](const auto &flag) { return flag.load(); }));
}

struct Adder {
    void Add(std::unique_ptr<int> more, const std::string &text)
    {
        sum += *more + static_cast<int>(text.size());
    }
    int sum = 0;
};

TEST(FfrtThread, PassesItsArgumentsOn)
{
    Adder adder;
    ffrt::thread thread(&Adder::Add, &adder, std::make_unique<int>(40), "ab");
    ffrt::thread moved = std::move(thread);
    EXPECT_TRUE(!thread.joinable() && moved.joinable());
    moved.join();
    EXPECT_FALSE(moved.joinable());
    EXPECT_EQ(adder.sum, 42);

    Counter counter;
    ffrt::thread detached(
        static_cast<ffrt::qos>(ffrt_qos_utility), [](Counter *ran) { ran->Add(); }, &counter);
    detached.detach();
    EXPECT_FALSE(detached.joinable());
    EXPECT_TRUE(counter.WaitFor(1));
    ffrt::wait();
}

TEST(FfrtThreadDeathTest, JoinableAtItsEndTerminates)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(ffrt::thread([]() {}), "");
    EXPECT_DEATH(ffrt::thread([]() {}) = ffrt::thread(), "");
}

void LeaveEverythingRunning()
{
    static auto *lock = new ffrt::mutex;
    static auto *never = new ffrt::condition_variable;
    static auto *started = new Counter;
    constexpr int ROUNDS = 20;
    for (int i = 0; i < ROUNDS; ++i) {
        ffrt::submit([]() {
            started->Add();
            for (;;) {
                ffrt_usleep(50);
            }
        });
        ffrt::submit([]() {
            started->Add();
            std::unique_lock<ffrt::mutex> guard(*lock);
            never->wait(guard, []() { return false; });
        });
        ffrt::submit([text = std::string(1000, 'x')]() {}, ffrt::task_attr().delay(i * 100));
        ffrt::thread([]() { ffrt_usleep(3600000000U); }).detach();
        ffrt_timer_start(
            i % 6, 1, nullptr, [](void *) { ffrt::submit([]() {}); }, true);
    }
    std::exit(started->WaitFor(2 * ROUNDS) ? 0 : 1);
}

TEST(FfrtExitDeathTest, ProcessMayEndWithTasksAndTimersUnderWay)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (int i = 0; i < 5; ++i) {
        EXPECT_EXIT(LeaveEverythingRunning(), testing::ExitedWithCode(0), "");
    }
}
} // namespace
