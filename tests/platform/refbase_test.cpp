// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "parcel.h"
#include "refbase.h"

namespace {

using OHOS::RefBase;
using OHOS::sptr;
using OHOS::wptr;

struct Events {
    std::atomic<int> first{0};
    std::atomic<int> last{0};
    std::atomic<int> ended{0};
};

struct Left : public virtual RefBase {
    int left = 1;
};

struct Right : public virtual RefBase {
    int right = 2;
};

// Its virtual base does not stand at the object's own address.
class Tracked : public Left, public Right {
public:
    static constexpr int ALIVE = 4711;

    explicit Tracked(Events &events) : events_(events)
    {}

    ~Tracked() override
    {
        state = 0;
        ++events_.ended;
    }

    void OnFirstStrongRef(const void *) override
    {
        ++events_.first;
    }

    void OnLastStrongRef(const void *) override
    {
        EXPECT_EQ(state, ALIVE);
        ++events_.last;
    }

    int state = ALIVE;
    sptr<Tracked> next;

private:
    Events &events_;
};

TEST(RefBase, LastStrongReferenceEndsTheObject)
{
    Events events;
    auto first = sptr<Tracked>::MakeSptr(events);
    sptr<Tracked> second = first;
    sptr<Tracked> third = std::move(second);
    EXPECT_FALSE(second);
    sptr<Tracked> &self = third;
    third = self;
    third = third.GetRefPtr();
    EXPECT_EQ(first->GetSptrRefCount(), 2);
    EXPECT_TRUE(first == third && third != second && second == nullptr);
    first.clear();
    EXPECT_EQ(events.ended, 0);
    third = std::move(self);
    EXPECT_EQ(third->state, Tracked::ALIVE);
    third = nullptr;
    EXPECT_EQ(events.first, 1);
    EXPECT_EQ(events.last, 1);
    EXPECT_EQ(events.ended, 1);
}

TEST(RefBase, AssigningFromWhatTheOldObjectOwnsKeepsTheNewOne)
{
    Events events;
    sptr<Tracked> chain = new Tracked(events);
    chain->next = new Tracked(events);
    chain->next->next = new Tracked(events);
    chain = chain->next.GetRefPtr();
    EXPECT_EQ(events.ended, 1);
    chain = chain->next;
    EXPECT_EQ(events.ended, 2);
    EXPECT_EQ(chain->state, Tracked::ALIVE);
}

TEST(RefBase, ObjectsThatNoSptrHeldAreNotCounted)
{
    Events events;
    wptr<Tracked> weak;
    {
        Tracked local(events);
        weak = &local;
        wptr<Left> base = weak;
        EXPECT_EQ(base, static_cast<Left *>(&local));
        EXPECT_EQ(local.GetSptrRefCount(), 0);
        EXPECT_EQ(local.GetWptrRefCount(), 2);
        base = nullptr;
        EXPECT_EQ(local.GetWptrRefCount(), 1);
        EXPECT_EQ(events.ended, 0);
    }
    EXPECT_EQ(events.ended, 1);
    EXPECT_FALSE(weak.promote());

    // The first sptr may well be a promoted one.
    wptr<Tracked> early = new Tracked(events);
    sptr<Tracked> promoted = early.promote();
    EXPECT_EQ(events.first, 1);
    EXPECT_EQ(promoted->GetSptrRefCount(), 1);
    promoted = nullptr;
    EXPECT_EQ(events.ended, 2);
    EXPECT_FALSE(early.promote());
}

TEST(RefBase, ReferencesConvertToBases)
{
    Events events;
    sptr<Tracked> object = new Tracked(events);
    sptr<Right> right = object;
    sptr<RefBase> base;
    base = right;
    wptr<Tracked> weak = object;
    wptr<Right> weakRight = weak;
    wptr<RefBase> weakBase(right);
    EXPECT_EQ(right->right, 2);
    EXPECT_EQ(weakRight, right);
    EXPECT_EQ(weakBase, base);
    EXPECT_TRUE(base == weakBase);
    EXPECT_EQ(object->GetSptrRefCount(), 3);
    EXPECT_EQ(weakRight.promote()->right, 2);
    object = weak;
    EXPECT_EQ(object->GetSptrRefCount(), 3);

    RefBase *address = base.GetRefPtr();
    object = nullptr;
    right = nullptr;
    base = nullptr;
    EXPECT_EQ(events.ended, 1);
    EXPECT_FALSE(weakRight.promote());
    // Still tells which object it was, which a late death notice asks for.
    EXPECT_EQ(weakBase.GetRefPtr(), address);
    // The address of a base cannot be found in an object that is gone.
    wptr<Right> late = weak;
    EXPECT_EQ(late, nullptr);
    object = weak;
    EXPECT_EQ(object, nullptr);
}

struct Value : public OHOS::Parcelable {
    bool Marshalling(OHOS::Parcel &) const override
    {
        return true;
    }

    std::string text;
};

TEST(RefBase, CopiedAndMovedValuesHaveCountsOfTheirOwn)
{
    sptr<Value> held = new Value();
    held->text = "held";
    sptr<Value> again = held;
    Value copy(*held);
    Value moved(std::move(*held));
    EXPECT_EQ(copy.GetSptrRefCount(), 0);
    EXPECT_EQ(moved.GetSptrRefCount(), 0);
    *held = std::move(copy);
    EXPECT_EQ(held->text, "held");
    EXPECT_EQ(held->GetSptrRefCount(), 2);
}

TEST(RefBase, CountsFromManyThreads)
{
    constexpr int THREADS = 4;
    constexpr int ROUNDS = 5000;
    Events events;
    sptr<Tracked> object = new Tracked(events);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([object] {
            for (int round = 0; round < ROUNDS; ++round) {
                sptr<Left> strong = object;
                wptr<Left> weak = strong;
                wptr<RefBase> base = weak;
                sptr<RefBase> promoted = base.promote();
                ASSERT_TRUE(promoted);
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    threads.clear();
    EXPECT_EQ(object->GetSptrRefCount(), 1);
    EXPECT_EQ(object->GetWptrRefCount(), 1);
    object = nullptr;
    EXPECT_EQ(events.ended, 1);
}

TEST(RefBase, PromotingRacesWithTheEnd)
{
    constexpr int ROUNDS = 300;
    constexpr int THREADS = 2;
    constexpr int PROMOTIONS = 1000;
    for (int round = 0; round < ROUNDS; ++round) {
        Events events;
        sptr<Tracked> object = new Tracked(events);
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < THREADS; ++i) {
            threads.emplace_back([weak = wptr<Tracked>(object), &ready] {
                ++ready;
                // Bounded: two threads that always find the object held by the other would keep it alive for ever.
                for (int promotion = 0; promotion < PROMOTIONS; ++promotion) {
                    const sptr<Tracked> strong = weak.promote();
                    if (!strong) {
                        return;
                    }
                    ASSERT_EQ(strong->state, Tracked::ALIVE);
                    wptr<RefBase> base = weak;
                    ASSERT_TRUE(base.promote());
                }
            });
        }
        while (ready < THREADS) {
            std::this_thread::yield();
        }
        object.clear();
        for (auto &thread : threads) {
            thread.join();
        }
        ASSERT_EQ(events.ended, 1);
        ASSERT_EQ(events.last, 1);
    }
}

} // namespace
