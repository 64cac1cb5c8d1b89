// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "blocking_calls.h"
#include "host/faults.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
constexpr int THREADS = 200;
constexpr int CALLS_OF_THREAD = 15;
constexpr size_t CALLS = size_t{THREADS} * CALLS_OF_THREAD;
constexpr int DEATHS = 3;
constexpr std::chrono::seconds PATIENCE(100);

// What became of every call: how often it returned, and with what.
class Ledger {
public:
    struct Call {
        int returns = 0;
        std::string savedId;
        NBError error;
    };

    size_t Open(const std::string &savedId = "")
    {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back({0, savedId, NBError()});
        return calls_.size() - 1;
    }

    void Return(size_t call, const NBError &error)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++calls_[call].returns;
        calls_[call].error = error;
        ++returned_;
        changed_.notify_all();
    }

    // False when so many calls do not return.
    bool WaitForReturns(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, PATIENCE, [&]() { return returned_ >= count; });
    }

    // When nothing is under way any more.
    const std::deque<Call> &Calls() const
    {
        return calls_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Call> calls_;
    size_t returned_ = 0;
};

class StormTest : public NotesTest {
protected:
    void StartSave(const std::string &id, bool callsBack)
    {
        const size_t call = ledger_.Open(id);
        Database()->SaveRecord(std::make_shared<NBContext>(), Note("stormy").Id(id), NB_SAVE_OVERWRITE,
            [this, call, callsBack, id](auto, auto database, auto, const NBRecordOperResult &result, auto &error) {
                if (callsBack) {
                    FetchById(database, "note", id);
                }
                ledger_.Return(call, error.HasError() ? error : result);
            });
    }

    void StartFetch(const std::string &id)
    {
        const size_t call = ledger_.Open();
        Database()->FetchRecordWithId(std::make_shared<NBContext>(), "note", id, {},
            [this, call](auto, auto, auto, auto &, auto &error) { ledger_.Return(call, error); });
    }

    void AskForUser()
    {
        const size_t call = ledger_.Open();
        NBUserInfo info;
        ledger_.Return(call, Kit()->GetCloudUserInfo(info, false));
    }

    void RunThread(int number)
    {
        std::minstd_rand random(static_cast<uint32_t>(number) + 1);
        for (int i = 0; i < CALLS_OF_THREAD; ++i) {
            const std::string id = "storm-" + std::to_string(number) + "-" + std::to_string(i);
            switch (random() % 4) {
                case 0:
                    AskForUser();
                    break;
                case 1:
                    StartFetch(id);
                    break;
                default:
                    StartSave(id, random() % 4 == 0);
            }
        }
    }

    Ledger ledger_;
};

TEST_F(StormTest, EveryCallReturnsOnceHoweverOftenTheServiceDies)
{
    Host::FaultPlan plan;
    plan.delay = 200;
    plan.maxDelay = std::chrono::milliseconds(3);
    const Host::FaultScope delays(plan);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([this, i]() { RunThread(i); });
    }
    for (size_t death = 1; death <= DEATHS; ++death) {
        EXPECT_TRUE(ledger_.WaitForReturns(death * CALLS / (DEATHS + 1)));
        Service().Kill();
    }
    for (auto &thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(ledger_.WaitForReturns(CALLS));

    std::set<std::string> kept;
    const auto changes = AllChanges(Database());
    ASSERT_FALSE(changes.error.HasError());
    for (const NBRecord &record : changes.records) {
        kept.insert(record.GetRecordId());
    }
    size_t acknowledged = 0;
    for (const auto &call : ledger_.Calls()) {
        EXPECT_EQ(call.returns, 1);
        if (call.savedId.empty()) {
            continue;
        }
        if (!call.error.HasError()) {
            ++acknowledged;
            EXPECT_EQ(kept.count(call.savedId), 1U) << call.savedId << " was acknowledged and is lost";
        } else {
            // Not connected, not sent, no answer.
            EXPECT_THAT(static_cast<int>(call.error.GetLocalErrorCode()), testing::AnyOf(1, 2, 11));
        }
    }
    // Requests that wait for a slot when the service dies fail with it, so that many do; those before it do not.
    EXPECT_GT(acknowledged, CALLS / (10 * DEATHS));
    RecordProperty("acknowledged", static_cast<int>(acknowledged));
    std::cout << CALLS << " calls, " << acknowledged << " saves acknowledged, " << kept.size() << " records kept\n";
}
} // namespace
