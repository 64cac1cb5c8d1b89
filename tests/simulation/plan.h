// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_PLAN_H
#define NUBIS_SIMULATION_PLAN_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/faults.h"

namespace Simulation {

enum class Action {
    SAVE,
    ERASE,
    MODIFY,
    MODIFY_WHOLE, // atomic
    COPY,
    FETCH,
    QUERY,
    FOLLOW,
    ASK_USER,
    LOCK,
    UNLOCK,
    SUBSCRIBE,
    UNSUBSCRIBE,
};

// A record as it is to be written. Every title is given once in a run, so that it tells who wrote it.
struct Writing {
    int record = 0;
    int title = 0;
    bool isNew = false;
    int source = 0; // of a copy
};

// What one client is to start.
struct Order {
    size_t client = 0;
    Action action = Action::SAVE;
    int policy = 0;
    std::vector<Writing> writings;
    std::vector<int> erasures;
};

// The end of the service of a user while it is asked for something, and its return.
struct Death {
    size_t user = 0;
    uint64_t atRequest = 0;     // of the round, from 1; 0: it lives on
    bool isAnswered = false;    // the request is handled before; its reply is lost all the same
    bool returnsAtOnce = false; // else when nothing is under way any more
};

// Orders that are under way together, what strikes them, and the time that passes after they have ended.
struct Round {
    std::vector<Order> orders;
    Host::FaultPlan faults;
    Death death;
    int restSeconds = 0;
};

constexpr size_t CLIENTS = 6;
constexpr size_t USERS = 2;
// The user whose service and kit a client works with.
size_t UserOf(size_t client);

// All of a run. It comes of the seed alone, whatever the machine does.
struct Plan {
    explicit Plan(uint64_t seed);

    // Who follows changes only when told of them; the others do it whenever they are ordered to.
    bool followsNotifications[CLIENTS] = {};
    std::vector<Round> rounds;
};

std::string Describe(const Order &order);
// All but the orders.
std::string Describe(const Round &round);

} // namespace Simulation

#endif // NUBIS_SIMULATION_PLAN_H
