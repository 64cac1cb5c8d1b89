// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FAULTS_H
#define HOST_FAULTS_H

#include <chrono>
#include <cstdint>
#include <vector>

// Faults at the IPC boundary, for tests: they hit requests that this process sends through proxies. Off by default. The
// same plan and the same order of requests give the same faults. Any thread.
namespace Host {

enum class Fault {
    NONE,
    /// The request is held back for a while, then goes its way.
    DELAY,
    /// The request does not leave: result 29201.
    SEND_FAILURE,
    /// The request is handled, its reply never arrives: result 29201.
    LOST_REPLY,
    /// The values of the reply end too early.
    CUT_REPLY,
    /// Some bytes of the reply are not what was sent.
    GARBLED_REPLY,
    /// The session dies before the request leaves, while it is handled, after the reply has arrived.
    DEATH_BEFORE,
    DEATH_DURING,
    DEATH_AFTER,
};

/// How often each fault strikes, in parts of a thousand requests; the sum must not exceed 1000.
struct FaultPlan {
    /// The same seed strikes the same requests.
    uint64_t seed = 1;
    ///@{
    /// Requests of a thousand that the Fault of this name strikes.
    uint32_t delay = 0;
    uint32_t sendFailure = 0;
    uint32_t lostReply = 0;
    uint32_t cutReply = 0;
    uint32_t garbledReply = 0;
    uint32_t deathBefore = 0;
    uint32_t deathDuring = 0;
    uint32_t deathAfter = 0;
    ///@}
    /// Upper bound of one delay.
    std::chrono::milliseconds maxDelay{20};
    /// Strikes only requests of this code; 0: requests of any code.
    uint32_t onlyCode = 0;
};

/// From now on requests are struck as planned, until the object ends. One at a time: a later one takes over.
class FaultScope {
public:
    /// Begins at once, with the first request that leaves from now on.
    explicit FaultScope(const FaultPlan &plan);
    ~FaultScope();
    FaultScope(const FaultScope &) = delete;
    FaultScope &operator=(const FaultScope &) = delete;

    /// What struck so far, request by request, NONE included.
    std::vector<Fault> History() const;

private:
    uint64_t id_;
};

} // namespace Host

#endif // HOST_FAULTS_H
