// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// What the service costs above reading the request, SQLite, and writing the reply.

#include <atomic>
#include <cstdlib>
#include <exception>
#include <future>
#include <iostream>
#include <stdexcept>
#include <thread>

#include <unistd.h>

#include "canned_protocol.h"
#include "host/ability_control.h"
#include "notes.h"
#include "service_world.h"
#include "sqlite_mirror.h"
#include "transport_client.h"
#include "util/json_writer.h"

namespace NubisBench {
namespace {
namespace fs = std::filesystem;
constexpr double MILLI = 1e3;
constexpr double SAVE_GOAL = 1.5;
constexpr double PAGE_GOAL = 1.2;
constexpr double CLIENTS_GOAL = 1;
constexpr int CLIENTS = 8;
constexpr int USER = 100;
// Numbers of notes for each client, so that no two save the same.
constexpr size_t NOTES_OF_CLIENT = 1000000;

Row ServiceRow(
    const std::string &id, const std::string &name, double goal, const std::string &floorName, const std::string &unit)
{
    return NewRow(id, name, goal, "service", floorName, unit);
}
} // namespace

void MeasureSave(const Options &options, const fs::path &folder)
{
    const auto count = static_cast<size_t>(options.Pick(1000, 100));
    const fs::path data = folder / "save";
    WriteCatalogue(data);
    Service service(data);
    size_t next = 0;
    const auto request = [&] { return SaveNotesRequest(std::exchange(next, next + count), count); };
    // The first one sets up what later ones find.
    CheckReply(service.Ask(request()));
    SqliteMirror mirror(DatabaseOf(data), folder / "save-floor.db");

    std::string text = request();
    const std::string replyText = service.Ask(text);
    CheckReply(replyText);
    const Json::Value reply = ParseJson(replyText);
    mirror.Watch();
    const auto save = [&] {
        const std::string fresh = request();
        const Stopwatch watch;
        const std::string answer = service.Ask(fresh);
        const double seconds = watch.Seconds();
        if (answer.size() < replyText.size() / 2) {
            CheckReply(answer);
        }
        mirror.Watch();
        return seconds;
    };
    const auto floor = [&] {
        const Stopwatch watch;
        // Freed before the watch is read, as the service frees what it parsed.
        ParseJson(text);
        mirror.Insert();
        // With the service's own writer, which is faster than JsonCpp's.
        const std::string answer = DriveService::WriteJson(reply);
        return watch.Seconds();
    };
    Row row = ServiceRow("service-save", std::to_string(count) + " records saved in one request", SAVE_GOAL,
        "parse, the same rows by SQLite, write", "ms");
    Interleave(row, options.Pick(15, 1), options.Pick(2, 1), save, floor, MILLI);
    Print(row);
}

namespace {
// Multiplies what was saved by SQLite itself, which is faster than asking the service for all of it.
void Multiply(const fs::path &path, size_t times)
{
    const auto database = OpenDurably(path);
    const int64_t notes = database->execAndGet("SELECT COUNT(*) FROM record WHERE record_type = 'note'").getInt64();
    database->exec("BEGIN");
    SQLite::Statement records(*database,
        "INSERT INTO record SELECT database_id, record_id || '-' || ?1, record_type, version, sequence + ?1 * ?2,"
        " deleted, created_time, edited_time, create_time, create_device, create_app, modify_time, modify_device,"
        " modify_app, owner_id, shared, relations, data FROM record"
        " WHERE record_type = 'note' AND sequence <= (SELECT last_sequence FROM cloud_database)");
    SQLite::Statement values(*database,
        "INSERT INTO record_value SELECT database_id, record_type, record_id || '-' || ?1, field, position,"
        " integer_value, real_value, text_value FROM record_value WHERE record_id IN (SELECT record_id FROM record"
        " WHERE record_type = 'note' AND sequence <= (SELECT last_sequence FROM cloud_database))");
    for (size_t i = 1; i < times; ++i) {
        for (SQLite::Statement *statement : {&records, &values}) {
            statement->bind(1, static_cast<int64_t>(i));
        }
        records.bind(2, notes);
        records.exec();
        records.reset();
        values.exec();
        values.reset();
    }
    database->exec("UPDATE cloud_database SET last_sequence = (SELECT MAX(sequence) FROM record)");
    database->exec("COMMIT");
    database->exec("PRAGMA wal_checkpoint(TRUNCATE)");
}

void FillNotes(const fs::path &data, size_t count)
{
    constexpr size_t batch = 1000;
    WriteCatalogue(data);
    Service service(data);
    for (size_t first = 0; first < count; first += batch) {
        CheckReply(service.Ask(SaveNotesRequest(first, std::min(batch, count - first))));
    }
}
} // namespace

void MeasureChanges(const Options &options, const fs::path &folder)
{
    const auto few = static_cast<size_t>(options.Pick(10000, 500));
    const auto times = static_cast<size_t>(options.Pick(100, 4));
    const auto page = static_cast<size_t>(options.Pick(1000, 100));
    for (const char *name : {"few", "many"}) {
        FillNotes(folder / name, few);
    }
    Multiply(DatabaseOf(folder / "many"), times);
    Service fewService(folder / "few");
    Service manyService(folder / "many");
    const auto ask = [&](Service &service, size_t notes) {
        return [&service, request = ChangesRequest(page, service.CursorAt(static_cast<int64_t>(notes / 2)))] {
            const Stopwatch watch;
            const std::string reply = service.Ask(request);
            const double seconds = watch.Seconds();
            if (reply.find("\"nextCursor\":\"\"") != std::string::npos) {
                throw std::runtime_error("the page is not full");
            }
            return seconds;
        };
    };
    Row row = ServiceRow("service-changes",
        "a page of " + std::to_string(page) + " changes out of " + std::to_string(few * times) + " against out of " +
            std::to_string(few),
        PAGE_GOAL, "service, " + std::to_string(few), "ms");
    Interleave(
        row, options.Pick(15, 1), options.Pick(4, 1), ask(manyService, few * times), ask(fewService, few), MILLI);
    Print(row);
}

// Prints how many a second.
void SaveSingles(const Options &options)
{
    const TransportClient client(USER);
    size_t next = static_cast<size_t>(getpid()) * NOTES_OF_CLIENT;
    const double rate = CallsPerSecond(1, options.isShort ? 0.2 : 1.5, [&](int) {
        const std::string reply = client.Exchange(SaveNotesRequest(next++, 1), true);
        if (reply.find("\"version\":1") == std::string::npos) {
            CheckReply(reply);
        }
    });
    std::cout << rate << '\n';
}

namespace {
double RateOfClients(const Options &options)
{
    std::vector<std::future<std::string>> clients;
    for (int i = 0; i < CLIENTS; ++i) {
        clients.push_back(std::async(std::launch::async, [&] { return RunChild("save-singles", options); }));
    }
    double rate = 0;
    for (auto &client : clients) {
        rate += std::stod(client.get());
    }
    return rate;
}

// How often a second SQLite by itself adds the rows of one note durably.
double RateOfCommits(const Options &options, const fs::path &folder, int round)
{
    const fs::path data = folder / ("commits-" + std::to_string(round));
    WriteCatalogue(data);
    Service service(data);
    SqliteMirror mirror(DatabaseOf(data), data / "floor.db");
    constexpr size_t batch = 1000;
    const size_t prepared = options.isShort ? batch : 10 * batch;
    // The first one sets up what later ones find.
    CheckReply(service.Ask(SaveNotesRequest(0, 1)));
    mirror.Watch();
    mirror.Insert();
    // One save is watched as many: that is faster, and the rows are the same.
    for (size_t first = 1; first < prepared; first += batch) {
        CheckReply(service.Ask(SaveNotesRequest(first, batch)));
        mirror.Watch(batch);
    }
    const double most = options.isShort ? 0.2 : 1.5;
    const Stopwatch watch;
    size_t commits = 0;
    while (commits < prepared && watch.Seconds() < most) {
        mirror.Insert();
        ++commits;
    }
    const double rate = static_cast<double>(commits) / watch.Seconds();
    fs::remove_all(data);
    return rate;
}
} // namespace

void MeasureClients(const Options &options, const fs::path &folder)
{
    setenv("NUBIS_MANIFEST_PATH", NUBIS_BENCH_MANIFESTS, 1);
    WriteCatalogue(fs::path(std::getenv("NUBIS_STATE_DIR")) / "drive");
    const TransportClient client(USER);
    CheckReply(client.Exchange(SaveFoldersRequest(), true));
    Row row = ServiceRow(
        "service-clients", "8 clients saving single records", CLIENTS_GOAL, "durable commits of SQLite", "requests/s");
    row.isAtLeast = true;
    for (int round = 0; round < options.Pick(7, 1); ++round) {
        const double rate = RateOfClients(options);
        row.rounds.emplace_back(rate, RateOfCommits(options, folder, round));
    }
    Settle(row);
    Print(row);
}
} // namespace NubisBench
