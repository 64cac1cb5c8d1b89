// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "plan.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <set>

namespace Simulation {

namespace {

constexpr int RECORDS = 5;
constexpr int FIRST_COPY = 100;
// Subscriptions belong to containers; of the clients that share one, the first speaks for all.
constexpr size_t SPEAKERS[] = {0, 3, 4};

// The engine's numbers are the same everywhere; the distributions of the standard library are not.
class Random {
public:
    explicit Random(uint64_t seed) : engine_(seed)
    {}

    int Below(int end)
    {
        return static_cast<int>(engine_() % static_cast<uint64_t>(end));
    }
    bool OneIn(int chances)
    {
        return Below(chances) == 0;
    }
    uint64_t Seed()
    {
        return engine_();
    }

private:
    std::mt19937_64 engine_;
};

class Planner {
public:
    explicit Planner(uint64_t seed) : random_(seed), usesNotifications_(random_.OneIn(3))
    {}

    bool FollowsNotifications()
    {
        return usesNotifications_ && random_.OneIn(2);
    }

    Round MakeRound(bool isFirst)
    {
        static constexpr int rests[] = {0, 0, 1, 7, 30, 61, 70, 200};
        Round round;
        // Who follows must know whether there is a subscription, so that in one round there is one order for it at most.
        std::set<size_t> subscribers;
        if (isFirst && usesNotifications_) {
            for (const size_t speaker : SPEAKERS) {
                round.orders.push_back({speaker, Action::SUBSCRIBE, 0, {}, {}});
                subscribers.insert(speaker);
            }
        }
        for (int i = random_.Below(8) + 4; i > 0; --i) {
            Order order = MakeOrder();
            const bool subscribes = order.action == Action::SUBSCRIBE || order.action == Action::UNSUBSCRIBE;
            if (!subscribes || subscribers.insert(order.client).second) {
                round.orders.push_back(std::move(order));
            }
        }
        round.faults = MakeFaults();
        if (random_.OneIn(4)) {
            round.death.user = static_cast<size_t>(random_.Below(USERS));
            round.death.atRequest = static_cast<uint64_t>(random_.Below(8)) + 1;
            round.death.isAnswered = random_.OneIn(2);
            round.death.returnsAtOnce = random_.OneIn(2);
        }
        round.restSeconds = rests[random_.Below(static_cast<int>(std::size(rests)))];
        return round;
    }

private:
    Order MakeOrder()
    {
        static constexpr Action actions[] = {Action::SAVE, Action::SAVE, Action::SAVE, Action::SAVE, Action::ERASE,
            Action::ERASE, Action::MODIFY, Action::MODIFY_WHOLE, Action::MODIFY_WHOLE, Action::COPY, Action::FETCH,
            Action::QUERY, Action::FOLLOW, Action::FOLLOW, Action::FOLLOW, Action::ASK_USER, Action::LOCK, Action::LOCK,
            Action::UNLOCK, Action::SUBSCRIBE, Action::UNSUBSCRIBE};
        Order order;
        order.client = static_cast<size_t>(random_.Below(CLIENTS));
        order.action = actions[random_.Below(static_cast<int>(std::size(actions)))];
        order.policy = random_.Below(3);
        const int first = random_.Below(RECORDS);
        switch (order.action) {
            case Action::SAVE:
                AddWritings(order, first, random_.Below(3) + 1);
                break;
            case Action::ERASE:
                AddErasures(order, first, random_.Below(2) + 1);
                break;
            case Action::MODIFY:
            case Action::MODIFY_WHOLE:
                AddErasures(order, first, random_.Below(2));
                AddWritings(order, first + 2, random_.Below(2) + 1);
                break;
            case Action::COPY:
                order.writings.push_back({nextCopy_++, nextTitle_++, true, first});
                break;
            case Action::SUBSCRIBE:
            case Action::UNSUBSCRIBE:
                AskForNotifications(order);
                break;
            default:
                order.erasures.push_back(first);
        }
        return order;
    }

    void AddWritings(Order &order, int first, int count)
    {
        for (int i = 0; i < count; ++i) {
            const int record = (first + i) % RECORDS;
            // Mostly right, but the plan does not know what came of the orders before.
            const bool isNew = written_[order.client].insert(record).second || random_.OneIn(8);
            order.writings.push_back({record, nextTitle_++, isNew, 0});
        }
    }

    void AddErasures(Order &order, int first, int count)
    {
        for (int i = 0; i < count; ++i) {
            const int record = (first + i) % RECORDS;
            written_[order.client].erase(record);
            order.erasures.push_back(record);
        }
    }

    void AskForNotifications(Order &order)
    {
        order.client = SPEAKERS[random_.Below(static_cast<int>(std::size(SPEAKERS)))];
        if (!usesNotifications_) {
            order.action = Action::FOLLOW;
        } else if (!random_.OneIn(4)) {
            order.action = Action::SUBSCRIBE;
        }
    }

    // Few kinds at a time, so that some rounds are hit hard by one and others see none.
    Host::FaultPlan MakeFaults()
    {
        static constexpr uint32_t Host::FaultPlan::*kinds[] = {&Host::FaultPlan::delay, &Host::FaultPlan::sendFailure,
            &Host::FaultPlan::lostReply, &Host::FaultPlan::cutReply, &Host::FaultPlan::garbledReply,
            &Host::FaultPlan::deathBefore, &Host::FaultPlan::deathDuring, &Host::FaultPlan::deathAfter};
        Host::FaultPlan faults;
        faults.seed = random_.Seed();
        faults.maxDelay = std::chrono::milliseconds(2);
        for (int i = random_.Below(4); i > 0; --i) {
            faults.*kinds[random_.Below(static_cast<int>(std::size(kinds)))] = 20U << random_.Below(4);
        }
        return faults;
    }

    Random random_;
    const bool usesNotifications_;
    int nextTitle_ = 1;
    int nextCopy_ = FIRST_COPY;
    std::set<int> written_[CLIENTS];
};

const char *NameOf(Action action)
{
    static constexpr const char *names[] = {"save", "erase", "modify", "modify-whole", "copy", "fetch", "query",
        "follow", "ask-user", "lock", "unlock", "subscribe", "unsubscribe"};
    return names[static_cast<size_t>(action)];
}

} // namespace

size_t UserOf(size_t client)
{
    return client < 4 ? 0 : 1;
}

Plan::Plan(uint64_t seed)
{
    Planner planner(seed);
    for (bool &follows : followsNotifications) {
        follows = planner.FollowsNotifications();
    }
    // Notifications do not tell of public databases.
    followsNotifications[2] = false;
    constexpr size_t count = 6;
    while (rounds.size() < count) {
        rounds.push_back(planner.MakeRound(rounds.empty()));
    }
}

std::string Describe(const Order &order)
{
    std::string text = "client " + std::to_string(order.client) + " " + NameOf(order.action) + " policy " +
                       std::to_string(order.policy);
    for (const Writing &writing : order.writings) {
        text +=
            (writing.isNew ? " new r" : " r") + std::to_string(writing.record) + "=w" + std::to_string(writing.title);
        text += order.action == Action::COPY ? " of r" + std::to_string(writing.source) : "";
    }
    for (const int record : order.erasures) {
        text += " -r" + std::to_string(record);
    }
    return text;
}

std::string Describe(const Round &round)
{
    const Host::FaultPlan &faults = round.faults;
    std::string text = "faults " + std::to_string(faults.seed);
    const uint32_t shares[] = {faults.delay, faults.sendFailure, faults.lostReply, faults.cutReply, faults.garbledReply,
        faults.deathBefore, faults.deathDuring, faults.deathAfter};
    for (const uint32_t share : shares) {
        text += " " + std::to_string(share);
    }
    if (round.death.atRequest > 0) {
        text += ", user " + std::to_string(round.death.user) + " dies at request " +
                std::to_string(round.death.atRequest) + (round.death.isAnswered ? " handled" : " unhandled") +
                (round.death.returnsAtOnce ? ", returns at once" : ", returns later");
    }
    return text + ", rest " + std::to_string(round.restSeconds) + " s";
}

} // namespace Simulation
