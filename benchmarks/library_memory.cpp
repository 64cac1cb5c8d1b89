// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The peak of memory in a large save. Each figure is that of a process of its own, so that no earlier one has left memory
// with the allocator.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "library_world.h"
#include "process_figures.h"

namespace NubisBench {
namespace {
constexpr double MEMORY_GOAL = 1.3;
constexpr double MEGABYTE = 1024.0 * 1024;

size_t Count(const Options &options)
{
    return static_cast<size_t>(options.Pick(10000, 1000));
}

std::filesystem::path ReplyFile()
{
    return std::filesystem::path(std::getenv("NUBIS_STATE_DIR")) / "save_reply.json";
}
} // namespace

void SaveInLibrary(const Options &options)
{
    const Library library(SYNC_USER);
    const auto notes = MakeNotes(1);
    library.Transport().SetReply("saveRecords", SaveReply(notes));
    library.Save(ToRecords(notes));
    {
        const std::string reply = SaveReply(MakeNotes(Count(options)));
        std::ofstream(ReplyFile()) << reply;
        library.Transport().SetReply("saveRecords", reply);
    }
    auto records = ToRecords(MakeNotes(Count(options)));
    TrimMemory();
    const int64_t before = ResidentBytes();
    ForgetPeak();
    library.Save(std::move(records));
    std::cout << static_cast<double>(PeakResidentBytes() - before) / MEGABYTE << '\n';
}

void SaveInParts(const Options &options)
{
    const auto notes = MakeNotes(Count(options));
    std::ifstream stream(ReplyFile());
    TrimMemory();
    const int64_t before = ResidentBytes();
    ForgetPeak();
    Json::Value request(Json::objectValue);
    Json::Value &records = request["records"];
    for (const Note &note : notes) {
        records.append(ToRequestJson(note));
    }
    const std::string sent = WriteJson(request);
    std::string received(std::filesystem::file_size(ReplyFile()), '\0');
    stream.read(received.data(), static_cast<std::streamsize>(received.size()));
    const Json::Value reply = ParseJson(received);
    std::cout << static_cast<double>(ResidentBytes() - before) / MEGABYTE << '\n';
}

void MeasureMemory(const Options &options)
{
    if (!options.Wants("memory")) {
        return;
    }
    Row row = NewRow("memory",
        "peak memory of a " + std::to_string(Count(options)) + "-record save above the caller's own records",
        MEMORY_GOAL, "library", "value and text, sent and received", "MB");
    for (int round = 0; round < options.Pick(7, 1); ++round) {
        const double peak = std::stod(RunChild("save-in-library", options));
        row.rounds.emplace_back(peak, std::stod(RunChild("save-in-parts", options)));
    }
    Settle(row);
    Print(row);
}
} // namespace NubisBench
