// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_CLIENT_H
#define NUBIS_SIMULATION_CLIENT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ledger.h"
#include "lock_model.h"
#include "nb_container.h"
#include "nb_database.h"
#include "plan.h"
#include "record_model.h"
#include "replica.h"

namespace Simulation {

// What the clients of one container share.
struct ContainerState {
    std::shared_ptr<Nubis::NBContainer> container;
    LockModel lock;
    // The number of the subscription that is surely in force, 0 when none is. Changed by the one client that speaks for the
    // container.
    std::atomic<int> subscription{0};
    int subscriptions = 0;
};

struct ClientSetup {
    size_t number = 0;
    std::shared_ptr<ContainerState> container;
    Nubis::NBDatabaseScope scope = Nubis::NB_DATABASE_PRIVATE;
    bool followsNotifications = false;
    std::function<int64_t()> nowMs;
};

// One user of the library, with a database that no other client has. It carries out orders, and keeps what can be
// concluded of their outcomes.
class Client {
public:
    Client(ClientSetup setup, Ledger &ledger);

    // Called by one task at a time; operations that call back are only started. With garbled replies nothing is
    // concluded of the outcomes.
    void Carry(const Order &order, bool isGarbled);
    // Somebody told that the database has changed.
    void OnNews();
    // Whether that was not followed yet, or could not be.
    bool HasNews() const
    {
        return hasNews_;
    }
    // Takes over the changes, page by page, unless it is told of them and was told of none. With garbled replies it only
    // asks.
    void Follow(bool isGarbled);

    RecordModel &Records()
    {
        return records_;
    }
    Replica &Copy()
    {
        return replica_;
    }
    const ClientSetup &Setup() const
    {
        return setup_;
    }

private:
    // Of one request that changes records.
    struct Attempt {
        size_t operation = 0;
        size_t firstChange = 0;
        std::vector<RecordModel::Change> changes;
        std::string text;
        bool isWhole = false;
        bool isGarbled = false;
        uint64_t lockBegin = 0;
    };

    Attempt Begin(const Order &order, bool isGarbled);
    void Conclude(const Attempt &attempt, const Nubis::NBResultMap &results, const Nubis::NBError &error);
    void NoteVersion(const Nubis::NBRecord &record);
    RecordModel::Outcome Judge(const Nubis::NBError &error, bool isGarbled, const std::string &text);
    void Start(size_t operation, int code);

    Nubis::NBRecord RecordOf(int number);
    std::vector<Nubis::NBRecord> RecordsToSave(const Order &order);
    std::vector<Nubis::NBRecord> RecordsToErase(const Order &order);

    void Change(const Order &order, bool isGarbled);
    void Fetch(size_t operation, const std::string &recordId, bool isGarbled);
    void Query(size_t operation, bool isGarbled);
    void Look(const std::vector<Nubis::NBRecord> &records);
    void AskUser(size_t operation, bool isGarbled);
    void FollowPage(bool isGarbled);
    void TakeLock(size_t operation, bool isGarbled);
    void GiveLockBack(size_t operation, bool isGarbled);
    void Subscribe(size_t operation, bool isGarbled);
    void Unsubscribe(size_t operation, bool isGarbled);

    const ClientSetup setup_;
    const std::shared_ptr<Nubis::NBDatabase> database_;
    Ledger &ledger_;
    RecordModel records_;
    Replica replica_;
    std::atomic<bool> isFollowing_{false};
    std::atomic<bool> hasNews_{true};
    // The subscription under which it has looked at the changes.
    std::atomic<int> lookedUnder_{0};

    std::mutex mutex_;
    // Guarded by mutex_: what is known of the records, and the versions that saves were acknowledged with.
    std::map<std::string, uint64_t> versions_;
    std::set<std::pair<std::string, uint64_t>> ownVersions_;

    // Of one order at a time.
    std::string subscriptionId_;
    Nubis::NBLock lock_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_CLIENT_H
