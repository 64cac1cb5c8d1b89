// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
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

struct Left : public virtual RefBase {};

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
    sptr<Tracked> &self = third;
    third = self;
    third = third.GetRefPtr();
    EXPECT_EQ(first->GetSptrRefCount(), 2);
    EXPECT_TRUE(first == third && third != second && second == nullptr);
    first.clear();
    EXPECT_EQ(events.ended, 0);
    third = std::move(self);
    EXPECT_EQ(third->state, Tracked::ALIVE);
    // What the old object owns may be the new one.
    third->next = new Tracked(events);
    third->next->next = new Tracked(events);
    third = third->next.GetRefPtr();
    EXPECT_EQ(events.ended, 1);
    third = third->next;
    EXPECT_EQ(events.ended, 2);
    third = nullptr;
    EXPECT_EQ(events.first, 3);
    EXPECT_EQ(events.last, 3);
    EXPECT_EQ(events.ended, 3);
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
    }
    EXPECT_EQ(events.ended, 1);
    EXPECT_FALSE(weak.promote());

    // The first sptr may well be a promoted one.
    wptr<Tracked> early = new Tracked(events);
    EXPECT_EQ(early.promote()->GetSptrRefCount(), 1);
    EXPECT_EQ(events.ended, 2);
    EXPECT_FALSE(early.promote());
}

TEST(RefBase, ReferencesConvertToBases)
{
    Events events;
    sptr<Tracked> object = new Tracked(events);
    sptr<Right> right = object;
    sptr<RefBase> base = right;
    wptr<Tracked> weak = object;
    wptr<Right> weakRight = weak;
    wptr<RefBase> weakBase(right);
    EXPECT_EQ(weakRight, right);
    EXPECT_TRUE(base == weakBase);
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
};

TEST(RefBase, CopiedAndMovedValuesHaveCountsOfTheirOwn)
{
    sptr<Value> held = new Value();
    Value copy(*held);
    Value moved(std::move(*held));
    EXPECT_EQ(copy.GetSptrRefCount() + moved.GetSptrRefCount(), 0);
    *held = std::move(copy);
    EXPECT_EQ(held->GetSptrRefCount(), 1);
}

TEST(RefBase, CountingFromManyThreadsRacesWithTheEnd)
{
    constexpr int ROUNDS = 300;
    constexpr int THREADS = 3;
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
                    const sptr<Left> left = strong;
                    const wptr<RefBase> base = left;
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
