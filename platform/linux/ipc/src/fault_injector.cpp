// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "fault_injector.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <random>
#include <utility>
#include <vector>

namespace Host {

namespace {

struct Injector {
    std::atomic<bool> armed{false};
    std::mutex mutex;
    // Guarded by mutex.
    uint64_t scope = 0;
    FaultPlan plan;
    std::mt19937_64 random;
    std::vector<Fault> history;
};

Injector &TheInjector()
{
    static auto *injector = new Injector();
    return *injector;
}

Fault Choose(const FaultPlan &plan, uint64_t number)
{
    const std::pair<uint32_t, Fault> shares[] = {
        {plan.delay, Fault::DELAY},
        {plan.sendFailure, Fault::SEND_FAILURE},
        {plan.lostReply, Fault::LOST_REPLY},
        {plan.cutReply, Fault::CUT_REPLY},
        {plan.garbledReply, Fault::GARBLED_REPLY},
        {plan.deathBefore, Fault::DEATH_BEFORE},
        {plan.deathDuring, Fault::DEATH_DURING},
        {plan.deathAfter, Fault::DEATH_AFTER},
    };
    constexpr uint64_t whole = 1000;
    uint64_t rest = number % whole;
    for (const auto &share : shares) {
        if (rest < share.first) {
            return share.second;
        }
        rest -= share.first;
    }
    return Fault::NONE;
}

} // namespace

FaultScope::FaultScope(const FaultPlan &plan)
{
    Injector &injector = TheInjector();
    std::lock_guard<std::mutex> lock(injector.mutex);
    id_ = ++injector.scope;
    injector.plan = plan;
    injector.random.seed(plan.seed);
    injector.history.clear();
    injector.armed = true;
}

FaultScope::~FaultScope()
{
    Injector &injector = TheInjector();
    std::lock_guard<std::mutex> lock(injector.mutex);
    if (injector.scope == id_) {
        injector.armed = false;
    }
}

std::vector<Fault> FaultScope::History() const
{
    Injector &injector = TheInjector();
    std::lock_guard<std::mutex> lock(injector.mutex);
    return injector.scope == id_ ? injector.history : std::vector<Fault>();
}

namespace Ipc {

FaultDraw FaultInjector::Draw(uint32_t code)
{
    FaultDraw draw;
    Injector &injector = TheInjector();
    if (!injector.armed.load(std::memory_order_relaxed)) {
        return draw;
    }
    std::lock_guard<std::mutex> lock(injector.mutex);
    const FaultPlan &plan = injector.plan;
    if (!injector.armed || (plan.onlyCode != 0 && plan.onlyCode != code)) {
        return draw;
    }
    // Three numbers for every request, used or not: what strikes one request never shifts the fate of the next.
    draw.kind = Choose(plan, injector.random());
    uint64_t length = injector.random();
    draw.noise = injector.random();
    if (plan.maxDelay.count() > 0) {
        draw.delay = std::chrono::milliseconds(length % static_cast<uint64_t>(plan.maxDelay.count()) + 1);
    }
    injector.history.push_back(draw.kind);
    return draw;
}

void FaultInjector::Spoil(const FaultDraw &draw, WireParcel &reply)
{
    if (draw.kind != Fault::CUT_REPLY && draw.kind != Fault::GARBLED_REPLY) {
        return;
    }
    if (reply.block.size != 0) {
        reply.block = draw.kind == Fault::CUT_REPLY
                          ? RawBlock::CopyOf(reply.block.data, draw.noise % reply.block.size + 1)
                          : RawBlock::CopyOf(reply.block.data, reply.block.size);
    }
    if (reply.values.empty()) {
        return;
    }
    if (draw.kind == Fault::CUT_REPLY) {
        reply.values.resize(draw.noise % reply.values.size());
        return;
    }
    std::mt19937_64 random(draw.noise);
    constexpr uint64_t most = 8;
    for (uint64_t left = random() % most + 1; left > 0; --left) {
        reply.values[random() % reply.values.size()] ^= static_cast<uint8_t>(random() | 1);
    }
    if (reply.block.size != 0) {
        auto *bytes = const_cast<uint8_t *>(reply.block.data);
        bytes[random() % reply.block.size] ^= static_cast<uint8_t>(random() | 1);
    }
}

} // namespace Ipc

} // namespace Host
