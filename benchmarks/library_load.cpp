// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Many callers at once.

#include <atomic>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "library_world.h"
#include "process_figures.h"

namespace NubisBench {
namespace {
constexpr int SLOTS = 12;
constexpr int SLOW_CALLERS = 64;
constexpr int SLOW_MS = 10;
constexpr double MS_PER_SECOND = 1000;
constexpr double SLOW_GOAL = 0.97;
constexpr double LOAD_GOAL = 0.85;
constexpr double PENDING_GOAL = 16;
constexpr double KILOBYTE = 1024;

void MeasureSlowService(const Options &options)
{
    const Library library(SYNC_USER);
    const auto notes = MakeNotes(1);
    library.Transport().SetReply("fetchRecordWithId", FetchReply(notes[0]), SLOW_MS);
    Row row = NewRow("callers-64", "64 callers, service answering after 10 ms", SLOW_GOAL, "library",
        "12 slots / 10 ms", "requests/s");
    row.isAtLeast = true;
    for (int round = 0; round < options.Pick(9, 1); ++round) {
        const double rate =
            CallsPerSecond(SLOW_CALLERS, options.isShort ? 0.1 : 1.0, [&](int) { library.Fetch(notes[0].id); });
        row.rounds.emplace_back(rate, SLOTS * MS_PER_SECOND / SLOW_MS);
    }
    Settle(row);
    Print(row);
}

void MeasureFastService(const Options &options)
{
    const Library library(SYNC_USER);
    const auto echo = [&](int) { library.Echo(); };
    const std::string request = library.RequestOf("echo", [&] { echo(0); });
    Row row = NewRow("callers-12", "12 callers, echo service", LOAD_GOAL, "library", "transport", "requests/s");
    row.isAtLeast = true;
    const double seconds = options.isShort ? 0.05 : 0.5;
    const auto floor = [&](int) { library.Transport().Exchange(request, false); };
    for (int round = -1; round < options.Pick(11, 1); ++round) {
        const double rate = CallsPerSecond(SLOTS, seconds, echo);
        const double most = CallsPerSecond(SLOTS, seconds, floor);
        if (round >= 0) {
            row.rounds.emplace_back(rate, most);
        }
    }
    Settle(row);
    Print(row);
}

// Until the process has as many threads as it will have.
void AwaitStandstill()
{
    constexpr int looks = 20;
    constexpr std::chrono::milliseconds between(50);
    int threads = 0;
    for (int same = 0; same < looks; ++same) {
        std::this_thread::sleep_for(between);
        const int now = ThreadsOf(0);
        same = now == threads ? same : 0;
        threads = now;
    }
}
} // namespace

void KeepPending(const Options &options)
{
    const auto count = static_cast<size_t>(options.Pick(10000, 200));
    const Library library(SYNC_USER);
    const auto notes = MakeNotes(1);
    library.Transport().SetReply("saveRecords", SaveReply(notes));
    library.Save(ToRecords(notes));
    library.Transport().HoldSaves(true);
    const auto record = ToRecords(notes).front();
    std::atomic<size_t> good{0};
    const auto countdown = std::make_shared<Countdown>(count);
    const auto callback = [&, countdown](const auto &, const auto &, const auto &,
                              const Nubis::NBRecordOperResult &result, const Nubis::NBError &error) {
        good += error.HasError() || result.HasError() ? 0 : 1;
        countdown->Done();
    };
    TrimMemory();
    const int64_t before = ResidentBytes();
    for (size_t i = 0; i < count; ++i) {
        Nubis::NBRecord copy = record;
        library.Database()->SaveRecord(nullptr, std::move(copy), Nubis::NB_SAVE_OVERWRITE, callback);
    }
    AwaitStandstill();
    const int64_t after = ResidentBytes();
    const int threads = ThreadsOf(0);
    library.Transport().HoldSaves(false);
    countdown->Wait();
    if (good != count) {
        throw std::runtime_error("pending saves failed");
    }
    std::cout << static_cast<double>(after - before) / static_cast<double>(count) / KILOBYTE << ' ' << threads << '\n';
}

namespace {
void MeasurePending(const Options &options)
{
    Row row =
        NewRow("pending", std::to_string(options.Pick(10000, 200)) + " pending saves: extra memory each; all complete",
            PENDING_GOAL, "library", "-", "KB");
    for (int round = 0; round < options.Pick(7, 1); ++round) {
        row.rounds.emplace_back(std::stod(RunChild("keep-pending", options)), 1.0);
    }
    Settle(row);
    Print(row);
}
} // namespace

void MeasureLoad(const Options &options)
{
    if (options.Wants("callers-64")) {
        MeasureSlowService(options);
    }
    if (options.Wants("callers-12")) {
        MeasureFastService(options);
    }
    if (options.Wants("pending")) {
        MeasurePending(options);
    }
}
} // namespace NubisBench
