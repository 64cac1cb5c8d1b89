// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_MORTAL_SERVICE_H
#define NUBIS_SIMULATION_MORTAL_SERVICE_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>

#include "plan.h"
#include "requests/request_pool.h"
#include "service_instance.h"

namespace Simulation {

// The drive service of one user, offered inside this process. It can die like a process, except that the requests that
// it has begun run to their end, unheard; and it can return on the same data. The simulation's thread owns it.
class MortalService {
public:
    // Begins to live.
    MortalService(std::string dataFolder, int userId, std::function<int64_t()> nowMs);
    // Dies.
    ~MortalService();
    MortalService(const MortalService &) = delete;
    MortalService &operator=(const MortalService &) = delete;

    // From now on it dies as planned; replaces what was planned before.
    void Plan(const Death &death);
    void Die();
    // Lives again if it is dead; waits for what the dead one still does.
    void Return();
    // Waits until no request is being handled and every notification is sent. False when that takes too long.
    bool AwaitQuiet();
    // How many requests came in all.
    uint64_t Requests();

    // The answer to a request, without the library and without IPC. Only while it lives.
    std::string Ask(const std::string &request);
    // Withdraws the offer, and returns whether nobody is connected any more, or soon.
    bool IsLeftByAll();

private:
    class Gate;
    struct Life {
        std::unique_ptr<DriveService::ServiceInstance> instance;
        DriveService::RequestPool *pool = nullptr;
        bool isOver = false;
        int handling = 0;
    };

    void Begin();
    void End(const std::shared_ptr<Life> &life, bool returnsAtOnce);
    void Bury();
    void Revive();
    void AwaitReturning();
    bool Enter(Life &life, Death &death);
    void Leave(Life &life);
    void OnGate(int change);

    bool AwaitHandled();
    bool IsOver();

    const std::string dataFolder_;
    const int userId_;
    const std::function<int64_t()> nowMs_;

    // Held while the life is used from outside its requests, or replaced; before the other one.
    std::mutex lifeMutex_;
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_, as are the members of the life.
    std::shared_ptr<Life> life_;
    int gates_ = 0;
    Death death_;
    uint64_t requests_ = 0;
    uint64_t requestsOfPlan_ = 0;
    std::future<void> returning_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_MORTAL_SERVICE_H
