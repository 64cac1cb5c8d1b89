// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_SIMULATION_H
#define NUBIS_SIMULATION_SIMULATION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "client.h"
#include "host/manual_clock.h"
#include "ledger.h"
#include "listener.h"
#include "mortal_service.h"
#include "plan.h"
#include "host_folders.h"

namespace Simulation {

// One run in a process of its own: the library, the host layer and a service for each user together, under a manual
// clock. Kits outlive it, because they live as long as their process.
class Simulation {
public:
    // The key is that of the services' notifications; making one takes longer than a run. What is ordered, and what
    // struck, is written to the trace.
    Simulation(const Plan &plan, const std::string &pushKey, std::ostream &trace);
    ~Simulation();

    // Carries out the plan and returns what was wrong, in words; nothing when all was well. When something was, the
    // object must not be destroyed: operations may still be under way.
    std::string Run();

private:
    void InstallCatalogue(const std::string &pushKey);
    void MakeClients();
    void StartListeners();

    // Since the epoch, for the library and the services.
    int64_t NowMs() const;

    void RunRound(const Round &round);
    void StartOrders(size_t client, const Round &round);
    void FollowToTheEnd();
    // Waits until nothing moves any more as long as the clock stands.
    void Settle();
    // Lets everything end that was started, whatever it takes; what hangs in spite of the service's death is reported.
    void EndAll();
    void Rest(int seconds);

    // What the service has, asked without the library.
    RecordModel::Contents ContentsOf(size_t client);
    void CheckRecords();
    void CheckReplicas();
    void CheckIdleness();

    const Plan &plan_;
    std::ostream &trace_;
    const std::set<std::string> filesBefore_;
    const size_t threadsBefore_;
    NubisTest::HostFolders folders_;
    Host::ManualClock clock_;
    const std::chrono::steady_clock::time_point begin_;
    Ledger ledger_;
    std::vector<std::unique_ptr<MortalService>> services_;
    std::vector<std::shared_ptr<Nubis::NubisNative>> kits_;
    std::vector<std::unique_ptr<Client>> clients_;
    std::vector<std::unique_ptr<Listener>> listeners_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_SIMULATION_H
