// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <future>
#include <set>
#include <thread>

#include "service_fixture.h"

namespace DriveService {

namespace {

class ConcurrencyTest : public ServiceTest {};

constexpr int WRITERS = 8;
constexpr int ROUNDS = 20;

// Follows the change feed from the beginning until it has seen the expected number of records; the versions that it
// meets must only go up.
std::set<std::string> Follow(const std::function<Json::Value(const Json::Value &)> &changesAfter, size_t expected)
{
    std::set<std::string> seen;
    Json::Value members = J("{'pageSize': 7, 'cursor': ''}");
    while (seen.size() < expected) {
        Json::Value reply = changesAfter(members);
        if (reply["code"] != 0) {
            break;
        }
        for (const Json::Value &change : reply["changes"]) {
            seen.insert(change["recordId"].asString());
        }
        members["cursor"] = reply["nextCursor"] == "" ? reply["newStartCursor"] : reply["nextCursor"];
    }
    return seen;
}

TEST_F(ConcurrencyTest, WritersAndReadersDoNotLoseOrSkipAnything)
{
    std::vector<std::future<void>> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(std::async(std::launch::async, [this, writer] {
            for (int round = 0; round < ROUNDS; ++round) {
                SaveOne(NewPerson("w" + std::to_string(writer) + "-" + std::to_string(round)), 0);
            }
        }));
    }
    auto read = [this](const Json::Value &members) { return Ask("fetchDatabaseChanges", members); };
    std::vector<std::future<std::set<std::string>>> readers;
    for (int reader = 0; reader < 4; ++reader) {
        readers.push_back(std::async(std::launch::async, Follow, read, size_t{WRITERS * ROUNDS}));
    }
    for (std::future<void> &writer : writers) {
        writer.get();
    }
    for (auto &reader : readers) {
        EXPECT_EQ(reader.get().size(), size_t{WRITERS * ROUNDS}) << "a cursor skipped a change";
    }
}

TEST_F(ConcurrencyTest, OfTwoChangesBasedOnOneVersionOneWins)
{
    SaveOne(NewPerson("p"));
    for (int version = 1; version <= ROUNDS; ++version) {
        std::atomic<int> accepted{0};
        std::vector<std::future<void>> writers;
        for (int writer = 0; writer < WRITERS; ++writer) {
            writers.push_back(std::async(std::launch::async, [&, writer] {
                Json::Value records(Json::arrayValue);
                records.append(Changed("p", version, "{}"));
                records[0]["age"] = writer;
                Json::Value result = Save(records)[0];
                accepted += result["code"] == 0 ? 1 : 0;
            }));
        }
        for (std::future<void> &writer : writers) {
            writer.get();
        }
        ASSERT_EQ(accepted, 1);
    }
    EXPECT_EQ(Fetch("p")["version"], ROUNDS + 1);
}

TEST_F(ConcurrencyTest, ReadersGoOnWhileAWriterHoldsItsTransaction)
{
    SaveOne(NewPerson("p"));
    std::unique_ptr<WriteSession> writer = service_->GetStore().BeginWrite();
    std::vector<std::future<Json::Value>> readers;
    for (int reader = 0; reader < 40; ++reader) {
        readers.push_back(std::async(std::launch::async, [this] { return Fetch("p"); }));
    }
    for (auto &reader : readers) {
        EXPECT_THAT(reader.get(), Succeeds());
    }
}

TEST_F(ConcurrencyTest, AChangedCatalogueIsReadOnceByAll)
{
    Json::Value entry = PeopleEntry();
    entry["appId"] = "changed";
    Install(entry);
    std::vector<std::future<Json::Value>> askers;
    for (int asker = 0; asker < WRITERS; ++asker) {
        askers.push_back(std::async(std::launch::async,
            [this] { return Ask("GetCloudAppInfo", J("{'bundleName': ['com.example.people']}")); }));
    }
    for (auto &asker : askers) {
        EXPECT_EQ(asker.get()["appInfo"][0]["schemaGroupVersion"], 3);
    }
}

} // namespace

} // namespace DriveService
