// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lock_model.h"

namespace Simulation {

namespace {
constexpr int64_t LOCK_MS = 60000;
}

uint64_t LockModel::Begin()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return ++now_;
}

const LockModel::Hold *LockModel::FindOther(
    size_t client, const std::string &session, uint64_t begin, int64_t nowMs) const
{
    for (const Hold &hold : holds_) {
        const bool isOther = hold.client != client && hold.session != session;
        if (isOther && hold.from < begin && hold.to > now_ && nowMs < hold.expiresMs) {
            return &hold;
        }
    }
    return nullptr;
}

std::string LockModel::OnTaken(
    size_t client, const std::string &session, uint64_t begin, int64_t beginMs, int64_t nowMs)
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++now_;
    const Hold *other = FindOther(client, session, begin, nowMs);
    Hold hold;
    hold.client = client;
    hold.session = session;
    hold.from = now_;
    // The service counts from when it was asked, which is not earlier than this.
    hold.expiresMs = beginMs + LOCK_MS;
    std::string problem = other == nullptr ? ""
                                           : "client " + std::to_string(client) + " got the lock that client " +
                                                 std::to_string(other->client) + " holds\n";
    holds_.push_back(hold);
    return problem;
}

std::string LockModel::OnWritten(size_t client, uint64_t begin, int64_t nowMs)
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++now_;
    const Hold *other = FindOther(client, "", begin, nowMs);
    return other == nullptr ? ""
                            : "client " + std::to_string(client) + " wrote while client " +
                                  std::to_string(other->client) + " held the lock\n";
}

void LockModel::OnGivingBack(size_t client)
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++now_;
    for (Hold &hold : holds_) {
        if (hold.client == client && hold.to > now_) {
            hold.to = now_;
        }
    }
}

} // namespace Simulation
