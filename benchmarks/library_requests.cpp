// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// What one request costs above its floor: writing the same request, one echo of the same parcel, parsing the same reply.

#include <stdexcept>
#include <utility>

#include "library_world.h"

namespace NubisBench {
namespace {
constexpr double MICRO = 1e6;
constexpr double MILLI = 1e3;
constexpr double SINGLE_GOAL = 1.25;
constexpr double BATCH_GOAL = 1.15;
constexpr double PER_RECORD_GOAL = 1.3;

// Seconds for each of so many calls, which return their own.
template <typename Call>
double Time(int calls, Call &&call)
{
    double seconds = 0;
    for (int i = 0; i < calls; ++i) {
        seconds += call();
    }
    return seconds / calls;
}

Row SingleRow(const std::string &id, const std::string &name)
{
    return NewRow(id, name, SINGLE_GOAL, "library", "write, echo, parse", "us");
}

// One caller, one call at a time.
template <typename Call, typename Floor>
void MeasureSingle(const Options &options, Row &&row, Call &&call, Floor &&floor)
{
    const int calls = options.Pick(50, 3);
    Interleave(
        row, options.Pick(15, 1), options.Pick(20, 1), [&] { return Time(calls, call); },
        [&] { return Time(calls, floor); }, MICRO);
    Print(row);
}

void MeasureUser(const Options &options, int32_t userId, const std::string &suffix, const std::string &way)
{
    const bool isAsync = userId == ASYNC_USER;
    const Library library(userId);
    const TransportClient &transport = library.Transport();
    const auto notes = MakeNotes(1);
    transport.SetReply("fetchRecordWithId", FetchReply(notes[0]));
    transport.SetReply("saveRecords", SaveReply(notes));

    const auto floorOf = [&](const std::string &request, bool withObject) {
        return [&transport, isAsync, withObject, json = ParseJson(request)] {
            const Stopwatch watch;
            const std::string text = WriteJson(json);
            ParseJson(isAsync ? transport.ExchangeAsync(text) : transport.Exchange(text, withObject));
            return watch.Seconds();
        };
    };
    if (options.Wants("fetch-one" + suffix)) {
        const auto fetch = [&] { return library.Fetch(notes[0].id); };
        const auto floor = floorOf(library.RequestOf("fetchRecordWithId", fetch), false);
        MeasureSingle(
            options, SingleRow("fetch-one" + suffix, "one record fetched by id, one caller" + way), fetch, floor);
    }
    if (options.Wants("save-one" + suffix)) {
        const auto save = [&, prepared = ToRecords(notes)] {
            return library.Save(std::vector<Nubis::NBRecord>(prepared));
        };
        const auto floor = floorOf(library.RequestOf("saveRecords", save), true);
        MeasureSingle(options, SingleRow("save-one" + suffix, "one record saved, one caller" + way), save, floor);
    }
}

// The request as the library has it, with the records left out that the floor builds itself.
Json::Value FrameOf(const std::string &request, const std::vector<Note> &notes)
{
    Json::Value frame = ParseJson(request);
    if (frame["records"].size() != notes.size() ||
        frame["records"][0] != ParseJson(WriteJson(ToRequestJson(notes[0])))) {
        throw std::runtime_error("the floor would build another request than the library");
    }
    frame.removeMember("records");
    return frame;
}

double SaveFloor(const TransportClient &transport, const Json::Value &frame, const std::vector<Note> &notes)
{
    const Stopwatch watch;
    Json::Value request = frame;
    Json::Value records(Json::arrayValue);
    for (const Note &note : notes) {
        records.append(ToRequestJson(note));
    }
    request["records"] = std::move(records);
    ParseJson(transport.Exchange(WriteJson(request), true));
    // The library calls back before it frees its request.
    return watch.Seconds();
}

Row BatchRow(const std::string &id, const std::string &name, const std::string &floor)
{
    return NewRow(id, name, BATCH_GOAL, "library", floor, "ms");
}

Row MeasureSave(const Options &options, const Library &library, size_t count)
{
    const auto notes = MakeNotes(count);
    const auto prepared = ToRecords(notes);
    library.Transport().SetReply("saveRecords", SaveReply(notes));
    OwnThread floorThread;
    const auto save = [&] { return library.Save(std::vector<Nubis::NBRecord>(prepared)); };
    const Json::Value frame = FrameOf(library.RequestOf("saveRecords", save), notes);
    Row row = BatchRow(
        "save-" + std::to_string(count), std::to_string(count) + " records in one save", "build, write, echo, parse");
    const int slices = options.Pick(static_cast<int>(count < 10000 ? 3000 / count : 1), 1);
    Interleave(
        row, options.Pick(11, 1), slices, save,
        [&] { return floorThread.Run([&] { return SaveFloor(library.Transport(), frame, notes); }); }, MILLI);
    return row;
}

void MeasureChanges(const Options &options, const Library &library, size_t count)
{
    const auto notes = MakeNotes(count);
    library.Transport().SetReply("fetchDatabaseChanges", ChangesReply(notes));
    OwnThread floorThread;
    const auto fetch = [&] { return library.FetchChanges(count); };
    const Json::Value json = ParseJson(library.RequestOf("fetchDatabaseChanges", fetch));
    const auto floor = [&] {
        const Stopwatch watch;
        ParseJson(library.Transport().Exchange(WriteJson(json), false));
        return watch.Seconds();
    };
    Row row =
        BatchRow("changes-" + std::to_string(count), std::to_string(count) + " changes fetched", "write, echo, parse");
    Interleave(
        row, options.Pick(11, 1), options.Pick(count < 10000 ? 4 : 1, 1), fetch, [&] { return floorThread.Run(floor); },
        MILLI);
    Print(row);
}
} // namespace

void MeasureRequests(const Options &options)
{
    MeasureUser(options, SYNC_USER, "", "");
    MeasureUser(options, ASYNC_USER, "-async", ", asynchronous way");
}

void MeasureBatches(const Options &options)
{
    const Library library(SYNC_USER);
    const size_t small = 100;
    const auto middle = static_cast<size_t>(options.Pick(1000, 200));
    const auto large = static_cast<size_t>(options.Pick(10000, 500));
    for (size_t count : {middle, large}) {
        if (options.Wants("changes-" + std::to_string(count))) {
            MeasureChanges(options, library, count);
        }
    }
    std::vector<Row> saves;
    for (size_t count : {small, middle, large}) {
        if (options.Wants("save-" + std::to_string(count)) || options.Wants("per-record")) {
            saves.push_back(MeasureSave(options, library, count));
            Print(saves.back());
        }
    }
    if (!options.Wants("per-record")) {
        return;
    }
    Row row =
        NewRow("per-record", "cost per record at " + std::to_string(large) + " against at " + std::to_string(small),
            PER_RECORD_GOAL, "library at " + std::to_string(large), "library at " + std::to_string(small), "us");
    for (size_t i = 0; i < saves.front().rounds.size(); ++i) {
        row.rounds.emplace_back(saves.back().rounds[i].first * MILLI / static_cast<double>(large),
            saves.front().rounds[i].first * MILLI / static_cast<double>(small));
    }
    Settle(row);
    Print(row);
}
} // namespace NubisBench
