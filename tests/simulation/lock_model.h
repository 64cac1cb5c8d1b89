// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_LOCK_MODEL_H
#define NUBIS_SIMULATION_LOCK_MODEL_H

#include <cstdint>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

namespace Simulation {

// Who surely holds the lock of one container: from the reply that gave it until its holder begins to give it back, or
// until it runs out. Any thread.
class LockModel {
public:
    // Before a request is sent that ends with a call of OnTaken or OnWritten.
    uint64_t Begin();
    // Each returns what cannot be, in words, or nothing. `begin` and `beginMs` are from before the request was sent. Times
    // are the service's.
    std::string OnTaken(size_t client, const std::string &session, uint64_t begin, int64_t beginMs, int64_t nowMs);
    std::string OnWritten(size_t client, uint64_t begin, int64_t nowMs);
    void OnGivingBack(size_t client);

private:
    struct Hold {
        size_t client = 0;
        std::string session;
        uint64_t from = 0;
        uint64_t to = std::numeric_limits<uint64_t>::max();
        int64_t expiresMs = 0;
    };

    // With the mutex held: somebody else's that lasted from the beginning to now.
    const Hold *FindOther(size_t client, const std::string &session, uint64_t begin, int64_t nowMs) const;

    std::mutex mutex_;
    uint64_t now_ = 0;
    std::vector<Hold> holds_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_LOCK_MODEL_H
